#include "support/testprogram.h"

#ifdef __SANITIZE_ADDRESS__
// A failed allocation gives what malloc() gives, for the tests that make one fail. Variables are kept
// off the stack, because the frames that a terminated thread left look like live ones.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:detect_stack_use_after_return=1";
}
#endif

int main(int argc, char** argv)
{
    return testprogram::main(argc, argv);
}
