#include "kazwifictl/text/network_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <tuple>

#include "kazwifictl/text/signal_strength.h"
#include "kazwifictl/text/ssid_text.h"
#include "kazwifictl/text/text_of.h"
#include "kazwifictl/text/unicode.h"
#include "kazwifictl/text/words.h"

namespace kaz::ctl {

using wifi::ConnectionInfo;

namespace {

constexpr int markWidth = 2;
constexpr int gap = 2;
// A name is cut only when it has more columns than this.
constexpr int generousSsid = 32;
constexpr int modestSsid = 20;

enum class Column { ssid, signal, security, state };

// Which columns there are, and how they are written.
struct Layout {
    std::vector<Column> columns;
    bool dBm = false;
    bool brief = false;
    int ssid = modestSsid;  // the columns that names should have
};

// From wide to narrow.
const std::vector<Layout>& layouts() {
    using enum Column;
    static const std::vector<Layout> all{
        {{ssid, signal, security, state}, true, false, generousSsid},
        {{ssid, signal, security, state}, false, false, generousSsid},
        {{ssid, signal, security, state}, false, true, modestSsid},
        {{ssid, security, state}, false, true, modestSsid},
        {{ssid, state}, false, true, modestSsid},
    };
    return all;
}

using Cells = std::vector<std::string>;
using Widths = std::vector<int>;

std::string_view heading(Column column, bool brief) {
    return textOf(column, {{Column::ssid, "SSID"},
                           {Column::signal, brief ? "SIG" : "SIGNAL"},
                           {Column::security, brief ? "SEC" : "SECURITY"},
                           {Column::state, "STATE"}});
}

std::string stateOf(const NetworkRow& row, bool brief) {
    if (brief && row.status == ConnectionInfo::Status::connectingIP) {
        return "no address";
    }
    if (!row.inRange) {
        return brief ? "away" : "not in range";
    }
    return row.isCurrent() ? statusInWords(row.status) : (row.saved ? "saved" : "");
}

std::string cellOf(Column column, const NetworkRow& row, const Layout& layout, bool utf8) {
    switch (column) {
        case Column::ssid:
            return presentable(row.ssid, utf8);
        case Column::signal:
            if (!row.dBm) {
                return "-";
            }
            return barsText(*row.dBm, utf8) + (layout.dBm ? fmt::format(" {:>4} dBm", *row.dBm) : "");
        case Column::security:
            if (!row.security) {
                return "-";
            }
            return layout.brief ? std::string(securityInBrief(*row.security))
                                : securityInWords({row.demands, *row.security});
        case Column::state:
            break;
    }
    return stateOf(row, layout.brief);
}

// The lines of a table in one layout, the heading first, and the widths of their columns.
struct Cut {
    const Layout* layout = nullptr;
    std::vector<Cells> lines;
    Widths widths;
};

Cut cutBy(const Layout& layout, const std::vector<NetworkRow>& rows, bool utf8) {
    Cut cut{&layout, std::vector<Cells>(rows.size() + 1), {}};
    for (const Column column : layout.columns) {
        cut.lines.front().emplace_back(heading(column, layout.brief));
        int widest = columnsOf(cut.lines.front().back());
        for (std::size_t i = 0; i < rows.size(); ++i) {
            cut.lines.at(i + 1).push_back(cellOf(column, rows.at(i), layout, utf8));
            widest = std::max(widest, columnsOf(cut.lines.at(i + 1).back()));
        }
        cut.widths.push_back(widest);
    }
    return cut;
}

int widthWithoutSsid(const Widths& widths) {
    const int gaps = gap * (static_cast<int>(widths.size()) - 1);
    return std::accumulate(widths.begin() + 1, widths.end(), markWidth + gaps);
}

Cut cutFor(const std::vector<NetworkRow>& rows, const Terminal& terminal) {
    Cut cut;
    for (const Layout& layout : layouts()) {
        cut = cutBy(layout, rows, terminal.utf8);
        const int rest = terminal.columns - widthWithoutSsid(cut.widths);
        if (terminal.columns == 0 || std::min(cut.widths.front(), layout.ssid) <= rest) {
            break;
        }
    }
    if (terminal.columns > 0) {
        const int rest = terminal.columns - widthWithoutSsid(cut.widths);
        cut.widths.front() = std::min(cut.widths.front(), std::max(rest, modestSsid / 2));
    }
    return cut;
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
        for (std::size_t i = 0; i < widths_.size() && left > 0; ++i) {
            const std::string text = cutTo(cells.at(i), std::min(widths_.at(i), left), ellipsis());
            if (!text.empty()) {
                line += blanks + styled(i, i == 0 && terminal_.interactive ? isolated(text) : text);
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
                                    const ConnectionInfo& connection, const Accesses& accesses,
                                    const wifi::NetworkInUse& inUse) {
    std::vector<NetworkRow> rows;
    rows.reserve(networks.size() + 1);
    for (const wifi::WifiNetwork& network : networks) {
        const wifi::NetworkAccess access = accessTo(network, accesses);
        rows.push_back({network.ssid, network.signal, access.mode, network.configured, {}, access.demands});
    }
    std::sort(rows.begin(), rows.end(), [](const NetworkRow& a, const NetworkRow& b) {
        constexpr int weakest = -1000;
        return std::make_tuple(-a.dBm.value_or(weakest), std::cref(a.ssid)) <
               std::make_tuple(-b.dBm.value_or(weakest), std::cref(b.ssid));
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
    if (isKnown(inUse)) {
        current.security = inUse.securityMode;
    }
    rows.insert(rows.begin(), std::move(current));
    return rows;
}

std::string networkTable(const std::vector<NetworkRow>& rows, const Terminal& terminal) {
    if (rows.empty()) {
        return "No networks in range.\n";
    }
    const Cut cut = cutFor(rows, terminal);
    const LineWriter write(cut.widths, terminal);
    const Style style(terminal.colour);
    std::string text =
        write("  ", cut.lines.front(), [&](std::size_t, std::string_view cell) { return style.dim(cell); });
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const NetworkRow& row = rows.at(i);
        text += write(
            row.isCurrent() ? "* " : "  ", cut.lines.at(i + 1), [&](std::size_t at, std::string_view cell) {
                const Column column = cut.layout->columns.at(at);
                if (column == Column::signal && row.dBm) {
                    return style.bySignal(*row.dBm, cell);
                }
                return column == Column::ssid && row.isCurrent() ? style.bold(cell) : std::string(cell);
            });
    }
    return text;
}

}  // namespace kaz::ctl
