#include "core/numeric.h"

#include <QByteArray>

#include <cmath>
#include <limits>

namespace valtrona {

namespace {

bool isSkipped(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n');
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

int digitValue(QChar c, int radix)
{
    const char16_t u = c.unicode();
    int digit = -1;
    if (u >= u'0' && u <= u'9')
        digit = u - u'0';
    else if (u >= u'a' && u <= u'f')
        digit = u - u'a' + 10;
    else if (u >= u'A' && u <= u'F')
        digit = u - u'A' + 10;
    return digit < radix ? digit : -1;
}

// "&H..." / "&O..." after the blanks are gone. The value is 16-bit signed
// up to 0xFFFF (unless a trailing "&" asks for 32 bits), 32-bit signed up to
// 0xFFFFFFFF, and an overflow beyond.
double radixValue(const QString &text, int radix)
{
    quint64 value = 0;
    qsizetype i = 2;
    for (; i < text.size(); ++i) {
        const int digit = digitValue(text.at(i), radix);
        if (digit < 0)
            break;
        value = value * quint64(radix) + quint64(digit);
        if (value > 0xFFFFFFFFu)
            return 0;
    }
    const bool forceLong = i < text.size() && text.at(i) == QLatin1Char('&');
    if (value <= 0xFFFFu && !forceLong)
        return double(qint16(quint16(value)));
    return double(qint32(quint32(value)));
}

} // namespace

double roundHalfEven(double value)
{
    if (!std::isfinite(value))
        return value;
    const double lower = std::floor(value);
    const double fraction = value - lower;
    double result = lower;
    if (fraction > 0.5)
        result = lower + 1;
    else if (fraction == 0.5)
        result = std::fmod(lower, 2.0) == 0 ? lower : lower + 1;
    return result + 0.0; // no negative zero
}

std::optional<qint32> toInt32(double value)
{
    const double rounded = roundHalfEven(value);
    if (!std::isfinite(rounded))
        return std::nullopt;
    if (rounded < double(std::numeric_limits<qint32>::min())
        || rounded > double(std::numeric_limits<qint32>::max()))
        return std::nullopt;
    return qint32(rounded);
}

qint32 toInt32Or(double value, qint32 fallback)
{
    return toInt32(value).value_or(fallback);
}

double val(QStringView text)
{
    QString compact;
    compact.reserve(text.size());
    for (const QChar c : text) {
        if (!isSkipped(c))
            compact.append(c);
    }

    if (compact.size() >= 2 && compact.at(0) == QLatin1Char('&')) {
        const QChar kind = compact.at(1).toUpper();
        if (kind == QLatin1Char('H'))
            return radixValue(compact, 16);
        if (kind == QLatin1Char('O'))
            return radixValue(compact, 8);
        return 0;
    }

    // Collect the longest prefix that forms a decimal number, in C notation.
    QByteArray number;
    qsizetype i = 0;
    const qsizetype n = compact.size();
    if (i < n && (compact.at(i) == QLatin1Char('+') || compact.at(i) == QLatin1Char('-')))
        number.append(char(compact.at(i++).unicode()));
    qsizetype digits = 0;
    while (i < n && isDigit(compact.at(i))) {
        number.append(char(compact.at(i++).unicode()));
        ++digits;
    }
    if (i < n && compact.at(i) == QLatin1Char('.')) {
        number.append('.');
        ++i;
        while (i < n && isDigit(compact.at(i))) {
            number.append(char(compact.at(i++).unicode()));
            ++digits;
        }
    }
    if (digits == 0)
        return 0;
    if (i < n) {
        const QChar e = compact.at(i).toUpper();
        if (e == QLatin1Char('E') || e == QLatin1Char('D')) {
            qsizetype j = i + 1;
            QByteArray exponent("e");
            if (j < n && (compact.at(j) == QLatin1Char('+') || compact.at(j) == QLatin1Char('-')))
                exponent.append(char(compact.at(j++).unicode()));
            const qsizetype firstDigit = j;
            while (j < n && isDigit(compact.at(j)))
                exponent.append(char(compact.at(j++).unicode()));
            if (j > firstDigit)
                number.append(exponent);
        }
    }

    bool ok = false;
    const double value = number.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return 0;
    return value + 0.0;
}

QString plainNumberText(double value)
{
    if (!std::isfinite(value))
        return QStringLiteral("0");
    return QString::number(value + 0.0, 'g', 15);
}

} // namespace valtrona
