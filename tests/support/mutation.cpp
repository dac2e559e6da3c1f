#include "support/mutation.h"

#include <QtGlobal>

namespace {

constexpr int usual_count = 100'000; // some seconds, with sanitizers

} // namespace

int mutation_count()
{
    bool given = false;
    const int count = qEnvironmentVariableIntValue("VELMO_MUTATIONS", &given);
    return given ? count : usual_count;
}

QByteArray mutated(QByteArray bytes, std::mt19937& random)
{
    const auto below = [&random](qsizetype end) {
        return std::uniform_int_distribution<qsizetype>(0, end - 1)(random);
    };
    for (qsizetype accidents = 1 + below(5); accidents > 0 && !bytes.isEmpty(); --accidents) {
        const qsizetype place = below(bytes.size());
        const char byte = static_cast<char>(below(256));
        switch (below(6)) {
        case 0: bytes[place] = byte; break;
        case 1: bytes.remove(place, 1); break;
        case 2: bytes.insert(place, bytes[place]); break;
        case 3: bytes.insert(place, byte); break;
        case 4: bytes.truncate(place); break;
        default: bytes.insert(place, bytes.mid(place, 1 + below(20))); break;
        }
    }
    return bytes;
}
