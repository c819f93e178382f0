#include <ssid_text.h>

#include <gtest/gtest.h>

namespace kaz::test {
namespace {

using namespace std::string_literals;

TEST(PanelSsidText, ReplacesWhatCouldMislead) {
    struct Case {
        std::string ssid;
        const char* shown;
    };
    for (const Case& each : {
             Case{"Home", "Home"}, Case{"Bj\xc3\xb6rk & S\xc3\xb8n", "Björk & Søn"},
             Case{"\xe6\xb8\xaf", "港"}, Case{"<b>bold</b>", "<b>bold</b>"}, Case{"a\0b"s, "a\uFFFDb"},
             Case{"a\nb\x1b[2J", "a\uFFFDb\uFFFD[2J"},
             Case{"a\xe2\x80\xae"
                  "b",
                  "a\uFFFDb"},                        // right-to-left override
             Case{"Home\xe2\x80\x8b", "Home\uFFFD"},  // zero-width space
             Case{"Home\xc2\xa0x", "Home\uFFFDx"},    // no-break space
             Case{"\xff\xfe", "\uFFFD\uFFFD"},
             Case{"a\xcc\x81\xcc\x81\xcc\x81\xcc\x81", "a\u0301\u0301\uFFFD\uFFFD"},
             Case{"\xcc\x81", "\uFFFD"},  // a mark with nothing to go with
         }) {
        EXPECT_EQ(shownSsid(each.ssid).toStdString(), each.shown) << idOfSsid(each.ssid).toStdString();
    }
}

TEST(PanelSsidText, NamesEveryByteInAnId) {
    for (const std::string& ssid : {"Home"s, "a\0b"s, "\xff\xfe"s, ""s}) {
        EXPECT_EQ(ssidOfId(idOfSsid(ssid)), ssid) << idOfSsid(ssid).toStdString();
    }
}

}  // namespace
}  // namespace kaz::test
