#pragma once

#include "calculation_server/parameter_solver.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace calculation {

constexpr int least_pairs = 4;

/// The pairs of a request, one datagram of UTF-8 text:
///
///     $PORT,COUNT,X,Y,Z,...,X,Y,Z,...,*
///
/// the asker's port, the number of pairs, all source points, then all target
/// points, in metres. Blanks around a number do no harm. Nothing, and the reason
/// in \a error, for anything else, for fewer than least_pairs, and for a
/// coordinate beyond a million kilometres.
std::optional<std::vector<point_pair>> parse_request(const QByteArray& datagram, QString& error);

/// The answer to a datagram. To a request it is
///
///     $dx,dy,dz,rx,ry,rz,k*
///
/// with the parameters in fixed notation; to anything else "!", the reason in
/// words without a comma, and "*". Empty, and not to be sent, for a datagram that
/// is such a refusal itself: two servers would answer each other for ever.
/// \a summary gets one line for the log.
QByteArray answer(const QByteArray& datagram, QString& summary);

} // namespace calculation
