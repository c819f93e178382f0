// Makes SSIDs safe to print. A stranger chooses the bytes of an SSID: they may contain terminal escape
// sequences, direction overrides, NUL and broken UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace kaz::ctl {

// `ssid`, escaped for a terminal. The result cannot move the cursor, change colours or reorder text, and it
// shows every byte. Printable characters are unchanged. The others are escaped:
//  - a backslash as "\\";
//  - an ASCII control character, or a byte that is not UTF-8, as "\x1b";
//  - any other character that prints nothing or alters its neighbours as "\u{202e}";
//  - a leading or trailing blank as "\x20";
//  - a combining mark that has no character to combine with, or that follows two others, as "\u{301}";
//  - without `utf8`, every character beyond ASCII.
// Two different SSIDs never get the same text.
std::string presentable(std::string_view ssid, bool utf8);

// presentable() in double quotes, for use in a sentence. Double quotes inside are escaped.
std::string quoted(std::string_view ssid, bool utf8);

// Makes a message that may contain foreign text safe to print. Escapes what presentable() escapes, except
// backslashes and blanks.
std::string harmless(std::string_view text, bool utf8);

// Whether `ssid` is not empty and presentable() does not change it. Then it can be typed and completed.
bool isPlain(std::string_view ssid);

// `ssid` as an argument for a shell: bare, in single quotes, or "--hex 486f6d65" when it cannot be typed.
std::string shellArgument(std::string_view ssid, bool utf8);

// `text` in single quotes, as a shell reads it.
std::string singleQuoted(std::string_view text);

// `ssid` as valid UTF-8, for JSON. Each byte that is not UTF-8 becomes U+FFFD.
std::string validUtf8(std::string_view ssid);

// `text`, between two U+200E (left-to-right marks) if it contains right-to-left letters. The marks keep a
// terminal with bidirectional layout from moving the text beside it. For terminals only.
std::string isolated(std::string_view text);

}  // namespace kaz::ctl
