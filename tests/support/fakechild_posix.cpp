// A child for the tests of the launcher. Its argument, a resource as the launcher sees it, says how it
// misbehaves; a number behind '=' belongs to it.

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

constexpr int kBlock = 1 << 20;
constexpr useconds_t kPollMicroseconds = 10000;

void say(std::FILE* stream, const std::string& line)
{
    std::fprintf(stream, "%s\n", line.c_str());
    std::fflush(stream);
}

std::string logged(const char* text)
{
    return std::string("2024-01-02 03:04:05.678 info ") + text;
}

/// Echoes its input; ends at "exit".
void obey()
{
    char line[256];
    while (std::fgets(line, sizeof line, stdin)) {
        line[std::strcspn(line, "\n")] = '\0';
        say(stdout, std::string("receive msg: ") + line);
        if (std::strcmp(line, "exit") == 0) {
            return;
        }
    }
}

/// Waits for a file, and says the line that is in it.
void sayContentOf(const std::string& path)
{
    std::string line;
    while (!std::getline(std::ifstream(path), line)) {
        ::usleep(kPollMicroseconds);
    }
    say(stderr, line);
}

[[noreturn]] void sleepForever()
{
    for (;;) {
        ::pause();
    }
}

/// Megabytes without a line end.
void flood(int descriptor, long megabytes)
{
    const std::string block(kBlock, 'x');
    for (long left = megabytes * kBlock; left > 0;) {
        const ssize_t written = ::write(descriptor, block.data(), block.size());
        if (written <= 0) {
            std::_Exit(3);
        }
        left -= written;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const std::string argument = argc > 1 ? argv[1] : "";
    const std::string kind = argument.substr(0, argument.find('='));
    const std::string value =
        kind.size() < argument.size() ? argument.substr(kind.size() + 1) : std::string();
    if (kind == "good") {
        say(stderr, logged("仪器已连接: SCN SCN4070A MY1 1.0"));
        obey();
    } else if (kind == "scanning") {
        say(stderr, logged("仪器已连接: SCN SCN4070A MY1 1.0"));
        say(stderr, logged("扫描开始"));
        obey();
    } else if (kind == "says") {
        say(stderr, logged("仪器已连接: SCN SCN4070A MY1 1.0"));
        sayContentOf(value);
        obey();
    } else if (kind == "window") {
        say(stderr, logged("仪器已连接: SCN SCN4070A MY1 1.0"));
        say(stdout, "WID:" + value + ";COLOR:#2b2b2b");
        obey();
    } else if (kind == "deaf") {
        sleepForever();
    } else if (kind == "stubborn") {
        std::signal(SIGTERM, SIG_IGN);
        say(stderr, "ignores SIGTERM");
        sleepForever();
    } else if (kind == "crash") {
        say(stderr, "the last words");
        std::fprintf(stderr, "without an end");
        std::fflush(stderr);
        std::abort();
    } else if (kind == "flood") {
        flood(STDOUT_FILENO, std::atol(value.c_str()));
        flood(STDERR_FILENO, std::atol(value.c_str()));
        say(stdout, "");
        say(stderr, "");
        say(stderr, logged("仪器已连接: SCN SCN4070A MY1 1.0"));
        obey();
    } else if (kind.rfind("ASRL", 0) == 0) {
        const char* const rate = std::getenv("SCN4070A_SERIAL_RATE");
        say(stderr, logged("仪器已连接: SCN SCN4070A at ") + (rate ? rate : "no rate"));
        obey();
    } else if (kind == "environment") {
        const char* const set = std::getenv(value.c_str());
        say(stderr, value + " is " + (set ? set : "not set"));
    }
    return 0;
}
