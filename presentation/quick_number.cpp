#include "presentation/quick_number.h"

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cmath>

double quick_to_double(QStringView text, bool* ok)
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
        return text.toDouble(ok);
    for (qsizetype i = 0; i < digits.size(); ++i) {
        const char16_t unit = digits[i].unicode();
        if (unit >= u'0' && unit <= u'9')
            whole = whole * 10 + (unit - u'0');
        else if (unit == u'.' && point < 0 && i > 0)
            point = i;
        else
            return text.toDouble(ok);
    }
    const qsizetype decimals = point < 0 ? 0 : digits.size() - point - 1;
    if (point < 0 ? digits.size() > most_digits : decimals == 0)
        return text.toDouble(ok);
    if (ok != nullptr)
        *ok = true;
    const double value =
        static_cast<double>(whole) / powers_of_ten[static_cast<std::size_t>(decimals)];
    return negative ? -value : value;
}

char16_t* quick_write(char16_t* to, double value, int decimals)
{
    // The last bit of such a value is 2^-52 or more, so that its fraction is a
    // whole number of these, and so is what each digit leaves of it.
    constexpr int fraction_bits = 52;
    constexpr quint64 one = quint64(1) << fraction_bits;
    const double magnitude = std::abs(value);
    const bool is_quick =
        (magnitude >= 1 && magnitude < 1e6) || (value == 0 && !std::signbit(value));
    if (!is_quick) { // nor is what is not a number
        const QString text = QString::number(value, 'f', decimals);
        return std::copy_n(text.utf16(), text.size(), to);
    }
    if (value < 0)
        *to++ = u'-';
    char16_t* const first = to;
    auto whole = static_cast<quint32>(magnitude);
    auto left = static_cast<quint64>((magnitude - static_cast<double>(whole)) * double(one));
    const auto put = [&to](quint32 number, int digits) {
        for (int at = digits - 1; at >= 0; --at, number /= 10)
            to[at] = static_cast<char16_t>(u'0' + number % 10);
        to += digits;
    };
    int digits = 1;
    for (quint32 power = 10; power <= whole; power *= 10)
        ++digits;
    put(whole, digits);
    *to++ = u'.';
    // A word has room for three digits more at once.
    for (int step = 3; decimals > 0; decimals -= step) {
        step = decimals < step ? 1 : step;
        left *= step == 3 ? 1000 : 10;
        put(static_cast<quint32>(left >> fraction_bits), step);
        left &= one - 1;
    }
    if (left >= one / 2) { // halves go up, as in QString::number
        char16_t* at = to - 1;
        for (; at >= first && (*at == u'9' || *at == u'.'); --at)
            *at = *at == u'9' ? u'0' : u'.';
        if (at >= first)
            ++*at;
        else {
            std::copy_backward(first, to, to + 1);
            *first = u'1';
            ++to;
        }
    }
    return to;
}
