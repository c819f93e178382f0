#include "platform/metrics/exposition/text_format.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace kaz::metrics_reporting {
namespace {

TEST(PrometheusText, OfNoGaugesIsEmpty) {
    EXPECT_EQ(toPrometheusText({}), "");
}

TEST(PrometheusText, HoldsTheLastValueAndTheNumberOfReportsOfEachGauge) {
    EXPECT_EQ(toPrometheusText({{"quarn.wifi.connected", 1, 3},
                                {"quarn.wifi.signal-strength-dbm", -52, 17},
                                {"quarn.wifi.connection-attempt.fail", 0, 0}}),
              "# HELP quarn_wifi_connected Last value reported to quarn.wifi.connected.\n"
              "# TYPE quarn_wifi_connected gauge\n"
              "quarn_wifi_connected 1\n"
              "# HELP quarn_wifi_connected_reports_total Number of reports to quarn.wifi.connected.\n"
              "# TYPE quarn_wifi_connected_reports_total counter\n"
              "quarn_wifi_connected_reports_total 3\n"
              "# HELP quarn_wifi_signal_strength_dbm Last value reported to quarn.wifi.signal-strength-dbm.\n"
              "# TYPE quarn_wifi_signal_strength_dbm gauge\n"
              "quarn_wifi_signal_strength_dbm -52\n"
              "# HELP quarn_wifi_signal_strength_dbm_reports_total Number of reports to "
              "quarn.wifi.signal-strength-dbm.\n"
              "# TYPE quarn_wifi_signal_strength_dbm_reports_total counter\n"
              "quarn_wifi_signal_strength_dbm_reports_total 17\n"
              "# HELP quarn_wifi_connection_attempt_fail_reports_total Number of reports to "
              "quarn.wifi.connection-attempt.fail.\n"
              "# TYPE quarn_wifi_connection_attempt_fail_reports_total counter\n"
              "quarn_wifi_connection_attempt_fail_reports_total 0\n");
}

// The lines without a leading "#".
std::vector<std::string> values(const std::vector<Sample>& samples) {
    std::vector<std::string> lines;
    std::istringstream page(toPrometheusText(samples));
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with('#')) {
            lines.push_back(line);
        }
    }
    return lines;
}

struct Value {
    double value;
    std::string text;
};

TEST(PrometheusText, SpellsEveryValueAsPrometheusReadsIt) {
    using limits = std::numeric_limits<double>;
    const std::vector<Value> all{
        {0, "0"},
        {-0.0, "-0"},
        {1, "1"},
        {-100, "-100"},
        {0.1, "0.1"},
        {-52.25, "-52.25"},
        {1e15, "1000000000000000"},
        {1e300, "1e+300"},
        {1e-300, "1e-300"},
        {limits::max(), "1.7976931348623157e+308"},
        {limits::denorm_min(), "5e-324"},
        {limits::quiet_NaN(), "NaN"},
        {-limits::quiet_NaN(), "NaN"},
        {limits::infinity(), "+Inf"},
        {-limits::infinity(), "-Inf"},
    };
    for (const auto& [value, text] : all) {
        EXPECT_EQ(values({{"g", value, 1}}).at(0), "g " + text);
    }
}

TEST(PrometheusText, CountsReportsInFull) {
    EXPECT_EQ(values({{"g", 0, std::numeric_limits<std::uint64_t>::max()}}).at(1),
              "g_reports_total 18446744073709551615");
}

struct Name {
    std::string name;
    std::string written;
};

TEST(PrometheusText, MapsNamesToTheAlphabetOfPrometheus) {
    using namespace std::string_literals;
    const std::vector<Name> names{
        {"quarn.wifi.connection-attempt.success", "quarn_wifi_connection_attempt_success"},
        {"azAZ09_:", "azAZ09_:"},
        {"9lives", "_9lives"},
        {"", "_"},
        {" ", "_"},
        {"two words", "two_words"},
        {"line\nbreak", "line_break"},
        {"nul\0byte"s, "nul_byte"},
        {"\xc3\xa4", "__"},
        {"{label=\"x\"}", "_label__x__"},
    };
    for (const auto& [name, written] : names) {
        EXPECT_THAT(values({{name, 5, 1}}),
                    ::testing::ElementsAre(written + " 5", written + "_reports_total 1"))
            << ::testing::PrintToString(name);
    }
}

TEST(PrometheusText, EscapesWhatIsSaidAboutAGauge) {
    EXPECT_THAT(toPrometheusText({{"a\nb\\c\xff\x1b\t", 5, 1}}),
                ::testing::StartsWith("# HELP a_b_c___ Last value reported to a\\nb\\\\c???.\n"));
}

TEST(PrometheusText, NeverGivesTwoGaugesOneName) {
    EXPECT_THAT(values({{"a.b", 1, 1}, {"a-b", 2, 2}, {"a_b", 3, 3}, {"a_b_2", 4, 4}}),
                ::testing::ElementsAre("a_b 1", "a_b_reports_total 1",      //
                                       "a_b_2 2", "a_b_2_reports_total 2",  //
                                       "a_b_3 3", "a_b_3_reports_total 3",  //
                                       "a_b_2_2 4", "a_b_2_2_reports_total 4"));
    EXPECT_THAT(values({{"a", 1, 1}, {"a.reports.total", 2, 2}}),
                ::testing::ElementsAre("a 1", "a_reports_total 1",  //
                                       "a_reports_total_2 2", "a_reports_total_2_reports_total 2"));
    EXPECT_THAT(values({{"a.reports.total", 2, 2}, {"a", 1, 1}}),
                ::testing::ElementsAre("a_reports_total 2", "a_reports_total_reports_total 2",  //
                                       "a_2 1", "a_2_reports_total 1"));
}

TEST(PrometheusText, KeepsTheNameOfAGaugeWhenAnotherGetsItsFirstReport) {
    EXPECT_THAT(values({{"a.b", 0, 0}, {"a-b", 2, 2}}),
                ::testing::ElementsAre("a_b_reports_total 0", "a_b_2 2", "a_b_2_reports_total 2"));
}

}  // namespace
}  // namespace kaz::metrics_reporting
