#include "kazwifictl/text/network_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <tuple>

#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/unicode.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;

namespace {

constexpr std::size_t columnCount = 4;
constexpr std::size_t ssidColumn = 0;
constexpr int narrowestSsid = 8;
constexpr int markWidth = 2;
constexpr int gap = 2;

using Cells = std::array<std::string, columnCount>;
using Widths = std::array<int, columnCount>;

Cells cellsOf(const NetworkRow& row, bool utf8) {
    const std::string state = row.isCurrent() ? statusInWords(row.status) : (row.saved ? "saved" : "");
    return {presentable(row.ssid, utf8),
            row.dBm ? fmt::format("{} {:>4} dBm", barsText(*row.dBm, utf8), *row.dBm) : "-",
            row.security ? securityInWords({row.demands, *row.security}) : "-", state};
}

Widths widthsOf(const std::vector<Cells>& lines, int columns) {
    Widths widths{};
    for (const Cells& cells : lines) {
        for (std::size_t i = 0; i < columnCount; ++i) {
            widths.at(i) = std::max(widths.at(i), columnsOf(cells.at(i)));
        }
    }
    const int total = std::accumulate(widths.begin(), widths.end(), markWidth + gap * int{columnCount - 1});
    if (columns > 0 && total > columns) {
        int& ssid = widths.at(ssidColumn);
        ssid = std::min(ssid, std::max(narrowestSsid, ssid - (total - columns)));
    }
    return widths;
}

// Joins the cells of a line, and cuts the line at the terminal's right edge.
class LineWriter {
  public:
    LineWriter(const Widths& widths, const Terminal& terminal) : widths_(widths), terminal_(terminal) {}

    template <typename Styler>
    std::string operator()(std::string_view mark, const Cells& cells, Styler&& styled) const {
        std::string line(mark);
        std::string blanks;
        int left = terminal_.columns > 0 ? terminal_.columns - markWidth : 1 << 20;
        for (std::size_t i = 0; i < columnCount && left > 0; ++i) {
            const std::string text = cutTo(cells.at(i), std::min(widths_.at(i), left), ellipsis());
            if (!text.empty()) {
                line += blanks + styled(i, i == ssidColumn && terminal_.interactive ? isolated(text) : text);
                blanks.clear();
            }
            blanks.append(static_cast<std::size_t>(std::max(0, widths_.at(i) + gap - columnsOf(text))), ' ');
            left -= widths_.at(i) + gap;
        }
        return line + '\n';
    }

  private:
    std::string_view ellipsis() const { return terminal_.utf8 ? "…" : "~"; }

    const Widths& widths_;
    const Terminal& terminal_;
};

}  // namespace

wifi::NetworkAccess accessTo(const wifi::WifiNetwork& network, const Accesses& accesses) {
    const auto known = accesses.find(network.ssid);
    return known == accesses.end() ? wifi::NetworkAccess{{}, network.securityMode} : known->second;
}

std::vector<NetworkRow> networkRows(const std::vector<wifi::WifiNetwork>& networks,
                                    const ConnectionInfo& connection, const Accesses& accesses) {
    std::vector<NetworkRow> rows;
    rows.reserve(networks.size() + 1);
    for (const wifi::WifiNetwork& network : networks) {
        const wifi::NetworkAccess access = accessTo(network, accesses);
        rows.push_back({network.ssid, network.signal, access.mode, network.configured, {}, access.demands});
    }
    std::sort(rows.begin(), rows.end(), [](const NetworkRow& a, const NetworkRow& b) {
        return std::forward_as_tuple(-a.dBm.value_or(0), a.ssid) <
               std::forward_as_tuple(-b.dBm.value_or(0), b.ssid);
    });
    if (connection.status == ConnectionInfo::Status::disconnected) {
        return rows;
    }
    NetworkRow current{connection.ssid, knownSignal(connection.signal), std::nullopt,
                       connection.status != ConnectionInfo::Status::connectingWifi, connection.status};
    if (const auto known = accesses.find(connection.ssid); known != accesses.end()) {
        current.security = known->second.mode;
        current.demands = known->second.demands;
    }
    const auto listed = std::find_if(rows.begin(), rows.end(),
                                     [&](const NetworkRow& row) { return row.ssid == connection.ssid; });
    if (listed != rows.end()) {  // list and connection are published one after the other, so they may overlap
        current.security = listed->security;
        current.saved = listed->saved;
        rows.erase(listed);
    }
    rows.insert(rows.begin(), std::move(current));
    return rows;
}

std::string networkTable(const std::vector<NetworkRow>& rows, const Terminal& terminal) {
    if (rows.empty()) {
        return "No networks in range.\n";
    }
    std::vector<Cells> lines{{"SSID", "SIGNAL", "SECURITY", "STATE"}};
    for (const NetworkRow& row : rows) {
        lines.push_back(cellsOf(row, terminal.utf8));
    }
    const Widths widths = widthsOf(lines, terminal.columns);
    const LineWriter write(widths, terminal);
    const Style style(terminal.colour);
    std::string text =
        write("  ", lines.front(), [&](std::size_t, std::string_view cell) { return style.dim(cell); });
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const NetworkRow& row = rows.at(i);
        text += write(
            row.isCurrent() ? "* " : "  ", lines.at(i + 1), [&](std::size_t column, std::string_view cell) {
                if (column == 1 && row.dBm) {
                    return style.bySignal(*row.dBm, cell);
                }
                return column == ssidColumn && row.isCurrent() ? style.bold(cell) : std::string(cell);
            });
    }
    return text;
}

}  // namespace kaz::ctl
