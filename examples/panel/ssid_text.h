#pragma once

#include <QString>

#include <string>

// An SSID is bytes that a stranger chose. `id` identifies it without loss inside QML; `shownSsid` is for display.

// Two hexadecimal digits per byte, and back.
QString idOfSsid(const std::string& ssid);
std::string ssidOfId(const QString& id);

// `ssid` as one line of text. U+FFFD replaces everything that could mislead: invalid UTF-8, characters that print
// nothing, break lines or change the text direction, and too many marks on one letter. Not for comparing.
QString shownSsid(const std::string& ssid);
