#include "ssid_text.h"

#include <QByteArray>
#include <QChar>
#include <QList>
#include <QStringDecoder>

namespace {

constexpr int marksShown = 2;

bool isMark(char32_t point) {
    switch (QChar::category(point)) {
        case QChar::Mark_NonSpacing:
        case QChar::Mark_SpacingCombining:
        case QChar::Mark_Enclosing:
            return true;
        default:
            return false;
    }
}

// Invisible letters that no Unicode category marks as such.
bool isBlankLetter(char32_t point) {
    return point == 0x115F || point == 0x1160 || point == 0x2800 || point == 0x3164 || point == 0xFFA0;
}

bool isHarmless(char32_t point) {
    switch (QChar::category(point)) {
        case QChar::Other_Control:
        case QChar::Other_Format:  // includes the direction marks
        case QChar::Other_Surrogate:
        case QChar::Other_PrivateUse:
        case QChar::Other_NotAssigned:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            return false;
        case QChar::Separator_Space:
            return point == U' ';
        default:
            return !isBlankLetter(point);
    }
}

}  // namespace

QString idOfSsid(const std::string& ssid) {
    return QString::fromLatin1(QByteArray::fromStdString(ssid).toHex());
}

std::string ssidOfId(const QString& id) {
    return QByteArray::fromHex(id.toLatin1()).toStdString();
}

QString shownSsid(const std::string& ssid) {
    QStringDecoder decode(QStringDecoder::Utf8);
    const QString text = decode(QByteArray::fromStdString(ssid));
    QString shown;
    int marks = marksShown;  // the first character has no letter before it that a mark could belong to
    for (const char32_t point : text.toUcs4()) {
        marks = isMark(point) ? marks + 1 : 0;
        const bool asItIs = isHarmless(point) && marks <= marksShown;
        shown += QString::fromUcs4(asItIs ? &point : U"\uFFFD", 1);
    }
    return shown;
}
