#include "channels/ChannelKind.h"

#include <QRegularExpression>
#include <QString>

namespace channels {

namespace {
QString textOf(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size())).trimmed();
}

/** The factor of a unit prefix; 0 if the letter is none. */
double factorOf(QChar prefix)
{
    switch (prefix.unicode()) {
        case 'k':
        case 'K':
            return 1e3;
        case 'M':
            return 1e6;
        case 'm':
            return 1e-3;
        case 'u':
            return 1e-6;
        default:
            return 0.0;
    }
}

Quantity quantityOf(const QString& word)
{
    static const QRegularExpression kVolt("^(V|VOLTS?)$");
    static const QRegularExpression kAmpere("^(A|AMPS?|AMPERES?)$");
    const QString capitals = word.toUpper();
    if (kVolt.match(capitals).hasMatch()) {
        return Quantity::Voltage;
    }
    return kAmpere.match(capitals).hasMatch() ? Quantity::Current : Quantity::Unknown;
}

/** The quantity by a leading U, V or I. */
Quantity quantityByName(const waveform::ChannelDescription& channel)
{
    static const QRegularExpression kVoltage("^[UV]");
    static const QRegularExpression kCurrent("^3?I");
    const QString name = textOf(channel.mName).toUpper();
    if (kVoltage.match(name).hasMatch()) {
        return Quantity::Voltage;
    }
    return kCurrent.match(name).hasMatch() ? Quantity::Current : Quantity::Unknown;
}

/** The unit with letters of other alphabets replaced by the Latin ones. */
QString latinUnit(std::string_view text)
{
    QString unit = textOf(text);
    const QString others = QStringLiteral("µμèкмВА");
    const QString latin = QStringLiteral("uuekmVA");
    for (int i = 0; i < others.size(); ++i) {
        unit.replace(others[i], latin[i]);
    }
    return unit;
}
} // namespace

ChannelUnit unitOf(std::string_view text)
{
    static const QRegularExpression kLetters("^[A-Za-z]*");
    const QString word = kLetters.match(latinUnit(text)).captured();
    const Quantity quantity = quantityOf(word);
    if (quantity != Quantity::Unknown || word.isEmpty()) {
        return {quantity, 1.0};
    }
    const double factor = factorOf(word[0]);
    return factor == 0.0 ? ChannelUnit() : ChannelUnit{quantityOf(word.mid(1)), factor};
}

ChannelUnit unitOf(const waveform::ChannelDescription& channel)
{
    return textOf(channel.mUnit).isEmpty() ? ChannelUnit{quantityByName(channel), 1.0}
                                           : unitOf(channel.mUnit);
}

Quantity likelyQuantityOf(const waveform::ChannelDescription& channel)
{
    static const QRegularExpression kVolts("^[kKMmu]?V(?![Aa])");
    static const QRegularExpression kAmperes("^[kKMmu]?A(?![Hh])");
    const Quantity quantity = unitOf(channel).mQuantity;
    if (quantity != Quantity::Unknown) {
        return quantity;
    }
    const QString unit = latinUnit(channel.mUnit);
    if (kVolts.match(unit).hasMatch()) {
        return Quantity::Voltage;
    }
    return kAmperes.match(unit).hasMatch() ? Quantity::Current : quantityByName(channel);
}

} // namespace channels
