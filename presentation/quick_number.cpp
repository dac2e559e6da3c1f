#include "presentation/quick_number.h"

#include <QtGlobal>

#include <array>

double quick_to_double(QStringView text)
{
    // Digits, one point, digits: with no more than 15 digits both the digits
    // read as a whole number and the power of ten are exact, and their quotient
    // is the nearest double. Everything else goes the long way.
    static constexpr std::array<double, 16> powers_of_ten{
        1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    constexpr qsizetype most_digits = 15;

    const bool negative = text.startsWith(u'-');
    const QStringView digits = negative ? text.sliced(1) : text;
    qint64 whole = 0;
    qsizetype point = -1;
    if (digits.isEmpty() || digits.size() > most_digits + 1)
        return text.toDouble();
    for (qsizetype i = 0; i < digits.size(); ++i) {
        const char16_t unit = digits[i].unicode();
        if (unit >= u'0' && unit <= u'9')
            whole = whole * 10 + (unit - u'0');
        else if (unit == u'.' && point < 0 && i > 0)
            point = i;
        else
            return text.toDouble();
    }
    const qsizetype decimals = point < 0 ? 0 : digits.size() - point - 1;
    if (point < 0 ? digits.size() > most_digits : decimals == 0)
        return text.toDouble();
    const double value =
        static_cast<double>(whole) / powers_of_ten[static_cast<std::size_t>(decimals)];
    return negative ? -value : value;
}
