
#include <QCoreApplication>

#include <cstdint>

/// What every fuzzer needs before its first input: an event loop.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication app(*argc, *argv);
    return 0;
}
