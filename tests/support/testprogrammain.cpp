#include "support/testprogram.h"

int main(int argc, char** argv)
{
    return testprogram::main(argc, argv);
}
