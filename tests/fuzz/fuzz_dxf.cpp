// The reader of drawings.

#include "fuzz_import.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    fuzz_import(bytes, "dxf");
    // Within the entities, which a mutation seldom gets right.
    fuzz_import("0\nSECTION\n2\nENTITIES\n" + bytes + "\n0\nENDSEC\n0\nEOF\n", "dxf");
    return 0;
}
