#include "shell/base/tolerant_json.h"

#include <QRegularExpression>
#include <QString>
#include <algorithm>
#include <cmath>

namespace {

QString escapeOf(char16_t unit) {
    return QStringLiteral("\\u%1").arg(static_cast<uint>(unit), 4, 16, QLatin1Char('0'));
}

/// The value of the longest valid prefix, as in the engine. An infinite value becomes a finite one that the
/// engine rejects as out of range too.
QString strictNumber(const QString& scanned) {
    static const QRegularExpression usable(
        QStringLiteral("^[+-]?([0-9]+[.]?[0-9]*|[.][0-9]+)([eE][+-]?[0-9]+)?"));
    constexpr double largest = 1e300;
    const double number = usable.match(scanned).captured().toDouble();
    return QString::number(std::isfinite(number) ? number : std::copysign(largest, number), 'g', 17);
}

/// `i` is the index after the opening quotation mark; on return, the index after the closing one.
QString strictString(const QString& text, qsizetype& i) {
    QString out = QStringLiteral("\"");
    while (i < text.size()) {
        const QChar unit = text[i++];
        if (unit == '\\' && i < text.size() && text[i] == 'u') {
            QString digits = text.mid(i + 1, 4);
            i += 1 + digits.size();
            const auto* end = std::find_if_not(digits.cbegin(), digits.cend(), [](QChar digit) {
                return QStringLiteral("0123456789abcdefABCDEF").contains(digit);
            });
            digits.truncate(end - digits.cbegin());
            out += escapeOf(static_cast<char16_t>(digits.toUShort(nullptr, 16)));
        } else if (unit == '\\' && i < text.size()) {
            out += unit;
            out += text[i++];
        } else if (unit < QChar(' ')) {
            out += escapeOf(unit.unicode());
        } else {
            out += unit;
        }
        if (unit == '"')
            break;
    }
    return out;
}

} // namespace

QByteArray strictJson(const QByteArray& bytes) {
    static const QRegularExpression word(QStringLiteral("\\G(true|false|null)"));
    static const QRegularExpression number(QStringLiteral("\\G[-+.eE0-9]+"));
    const QString text = QString::fromUtf8(bytes);
    QString out;
    for (qsizetype i = 0; i < text.size();) {
        if (text[i] == '"') {
            out += strictString(text, ++i);
        } else if (const auto found = word.match(text, i); found.hasMatch()) {
            out += found.captured();
            i = found.capturedEnd();
        } else if (const auto scanned = number.match(text, i); scanned.hasMatch()) {
            out += strictNumber(scanned.captured());
            i = scanned.capturedEnd();
        } else {
            out += text[i++];
        }
    }
    return out.toUtf8();
}
