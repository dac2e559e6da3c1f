#pragma once

#include <QByteArray>

#include <random>

/// How many mutated inputs a test tries: VELMO_MUTATIONS, or 100,000.
[[nodiscard]] int mutation_count();

/// The same bytes with up to five accidents: a byte changed, lost, doubled or
/// put in, the end cut off, a stretch repeated.
[[nodiscard]] QByteArray mutated(QByteArray bytes, std::mt19937& random);
