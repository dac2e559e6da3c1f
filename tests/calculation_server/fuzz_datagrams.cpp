// build-fuzz/tests/calculation_server/fuzz_datagrams -max_len=4096 -max_total_time=60

#include "answer_check.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray datagram(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const QString fault = fault_of_answer(datagram);
    if (!fault.isEmpty()) {
        qCritical("%s", qPrintable(fault));
        std::abort();
    }
    return 0;
}
