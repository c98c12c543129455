// libFuzzer entry of the data block path: clang++ with -fsanitize=fuzzer (see tests/CMakeLists.txt).
// Run: fuzz_data_block -max_len=4096 tests/fuzz/corpus

#include "fuzz/DataBlockHarness.h"

#include <QCoreApplication>
#include <QLocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    static QCoreApplication app(*argc, *argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static searchdata::fuzz::DataBlockHarness harness;
    const QString fault = harness.run(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    if (!fault.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(fault));
        std::abort();
    }
    return 0;
}
