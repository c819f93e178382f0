// SSIDs as a person may read them. An SSID is bytes that a stranger chose: it may hold terminal escape
// sequences, direction overrides, NUL and broken UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace kaz::ctl {

// `ssid` in characters that can neither move the cursor, change colours nor reorder text, and that show every
// byte: printable characters stand for themselves; a backslash becomes "\\", a control character or a byte
// that is not UTF-8 "\x1b", any other character that prints nothing or alters its neighbours "\u{202e}". So
// are blanks at the ends and more than two marks on one character. Without `utf8` everything beyond ASCII is
// escaped. Two different SSIDs never get the same text.
std::string presentable(std::string_view ssid, bool utf8);

// presentable() between double quotes, those inside escaped, for use in a sentence.
std::string quoted(std::string_view ssid, bool utf8);

// A message that may carry foreign text, made fit for a terminal: what presentable() escapes is escaped, but
// for backslashes and blanks.
std::string harmless(std::string_view text, bool utf8);

// Whether presentable() leaves `ssid` as it is, so that it can be typed and completed by name.
bool isPlain(std::string_view ssid);

// `ssid` as an argument for a shell: bare, in single quotes, or "--hex 486f6d65" when it cannot be typed.
std::string shellArgument(std::string_view ssid, bool utf8);

// The text form for JSON: valid UTF-8, with U+FFFD for each byte that is not.
std::string validUtf8(std::string_view ssid);

// `text` with U+200E around it when it holds right-to-left letters, so that a terminal that lays out both
// directions does not move what stands beside it. For terminals only.
std::string isolated(std::string_view text);

}  // namespace kaz::ctl
