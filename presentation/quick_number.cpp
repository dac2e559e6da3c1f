#include "presentation/quick_number.h"

#include <QtGlobal>

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

void quick_append(QString& text, double value, int decimals)
{
    // The last bit of such a value is 2^-52 or more, so that its fraction is a
    // whole number of these, and so is what each digit leaves of it.
    constexpr int fraction_bits = 52;
    constexpr quint64 one = quint64(1) << fraction_bits;
    const double magnitude = std::abs(value);
    if (!(magnitude >= 1 && magnitude < 1e6)) { // nor what is not a number
        text.append(QString::number(value, 'f', decimals));
        return;
    }
    auto whole = static_cast<quint64>(magnitude);
    auto left = static_cast<quint64>((magnitude - static_cast<double>(whole)) * double(one));
    quint64 fraction = 0;
    quint64 all_nines = 0;
    for (int i = 0; i < decimals; ++i) {
        left *= 10;
        fraction = fraction * 10 + (left >> fraction_bits);
        left &= one - 1;
        all_nines = all_nines * 10 + 9;
    }
    if (left >= one / 2) { // halves go up, as in QString::number
        whole += fraction == all_nines ? 1 : 0;
        fraction = fraction == all_nines ? 0 : fraction + 1;
    }

    std::array<char16_t, 24> digits; // "-1000000.123456789012"
    std::size_t first = digits.size();
    const auto put = [&](quint64& number) {
        digits[--first] = static_cast<char16_t>(u'0' + number % 10);
        number /= 10;
    };
    for (int i = 0; i < decimals; ++i)
        put(fraction);
    digits[--first] = u'.';
    do
        put(whole);
    while (whole > 0);
    if (value < 0)
        digits[--first] = u'-';
    text.append(QStringView(digits).sliced(static_cast<qsizetype>(first)));
}
