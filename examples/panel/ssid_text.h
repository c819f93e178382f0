#pragma once

#include <QString>

#include <string>

// An SSID is bytes that a stranger chose. `id` names it without loss inside QML; `shownSsid` is for the eye.

// Two hexadecimal digits a byte, and back.
QString idOfSsid(const std::string& ssid);
std::string ssidOfId(const QString& id);

// The text of `ssid`, in which U+FFFD stands for whatever could mislead: bytes that are not UTF-8, characters that
// print nothing, break lines or change the direction of their neighbours, and marks heaped on one letter. One line
// always; not for comparing.
QString shownSsid(const std::string& ssid);
