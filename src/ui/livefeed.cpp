#include "ui/livefeed.h"

#include <QRegularExpression>
#include <cmath>

std::optional<double> PlainNumber(const QString &text) {
    static const QRegularExpression number(QStringLiteral(R"(^\s*[-+]?(\d+\.?\d*|\.\d+)\s*$)"));
    if (!number.match(text).hasMatch()) return std::nullopt;
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value)) return std::nullopt;
    return value;
}
