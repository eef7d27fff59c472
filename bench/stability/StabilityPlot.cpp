#include "bench/stability/StabilityPlot.h"

#include "TessaruneCore/text/Text.h"
#include "bench/support/Statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace tessarune::StabilityPlot {

namespace {

// In pixels.
constexpr double width = 980;
constexpr double top = 84;
constexpr double rowHeight = 30;
constexpr double barHeight = 16;
constexpr double leftAxis = 190;
constexpr double leftEnd = 470;
constexpr double rightAxis = 560;
constexpr double rightEnd = 950;
constexpr double leastHeight = 180;
constexpr double below = 52; // the axes' numbers and names
constexpr std::size_t mostTicks = 6;

/// Told apart also by those who see few colours: neighbours differ in brightness, and lines in
/// their dashes.
struct Colour {
    std::string_view light;
    std::string_view dark;
    std::string_view dashes;
};
constexpr std::array<Colour, 8> colours{{
    {"#57606a", "#9aa4af", "2 3"},
    {"#8250df", "#c297ff", ""},
    {"#0a58ca", "#6cb6ff", ""},
    {"#bc4c00", "#f69d50", ""},
    {"#1a7f37", "#57ab5a", ""},
    {"#bf3989", "#fc8dc7", "8 3"},
    {"#0e7490", "#39c5cf", "8 3"},
    {"#9a6700", "#daaa3f", "8 3"},
}};

constexpr std::string_view style = R"(<style>
text{font:13px system-ui,sans-serif;fill:#24292f}
.title{font-weight:600;font-size:15px}
.small{font-size:12px;fill:#57606a}
.value{stroke:#ffffff;stroke-width:4px;paint-order:stroke}
.paper{fill:#ffffff}
.axis{stroke:#8c959f}
.grid{stroke:#d8dee4}
.line{fill:none;stroke-width:2}
@media (prefers-color-scheme:dark){
text{fill:#e6edf3}
.small{fill:#9aa4af}
.value{stroke:#0d1117}
.paper{fill:#0d1117}
.axis{stroke:#6e7681}
.grid{stroke:#30363d}
}
)";

std::string number(double value) {
    return Text::fixed(value, 1);
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char byte : text) {
        switch (byte) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            // Control characters may not stand in XML, not even escaped.
            result += static_cast<unsigned char>(byte) < 0x20 ? ' ' : byte;
        }
    }
    return result;
}

/// From 0 to a round number, with round numbers between.
struct Scale {
    Scale(double largest, double from, double to) : from_(from), to_(to) {
        const double rough = std::max(largest, 1e-3) / (static_cast<double>(mostTicks) - 1);
        const double power = std::pow(10, std::floor(std::log10(rough)));
        step = power * 10;
        for (const double factor : {5.0, 2.0, 1.0}) {
            if (factor * power >= rough)
                step = factor * power;
        }
        end = step * std::max(1.0, std::ceil(largest / step));
    }

    double at(double value) const { return from_ + (to_ - from_) * std::min(value / end, 1.0); }
    std::string label(double value) const {
        const double decimals = std::max(0.0, std::ceil(-std::log10(step) - 1e-9));
        return Text::fixed(value, static_cast<int>(decimals));
    }

    double step;
    double end;

  private:
    double from_;
    double to_;
};

class Drawing {
  public:
    explicit Drawing(const StabilityReport& report)
        : report_(report),
          bottom_(top +
                  std::max(leastHeight, rowHeight * static_cast<double>(report.rows.size()))) {}

    std::string svg() {
        const std::string height = number(bottom_ + below);
        out_ = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + number(width) + " " +
               height + "\" width=\"" + number(width) + "\" height=\"" + height + "\">\n";
        addStyle();
        out_ += "<rect class=\"paper\" width=\"100%\" height=\"100%\"/>\n";
        addText(20, 28, "title", "start", report_.title);
        addBars();
        addCurves();
        return out_ + "</svg>\n";
    }

  private:
    static std::string series(std::size_t row) {
        return "s" + std::to_string(row % colours.size());
    }

    void addStyle() {
        out_ += style;
        std::string dark;
        for (std::size_t i = 0; i < colours.size(); ++i) {
            const std::string name = "." + series(i);
            const auto rules = [&](std::string_view colour) {
                return name + "{fill:" + std::string(colour) + "}" + name +
                       ".line{fill:none;stroke:" + std::string(colour) + "}\n";
            };
            out_ += rules(colours[i].light);
            dark += rules(colours[i].dark);
            if (!colours[i].dashes.empty())
                out_ += name + ".line{stroke-dasharray:" + std::string(colours[i].dashes) + "}\n";
        }
        out_ += "@media (prefers-color-scheme:dark){\n" + dark + "}\n</style>\n";
    }

    void addText(double x, double y, std::string_view kind, std::string_view anchor,
                 std::string_view text) {
        out_ += "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" class=\"" +
                std::string(kind) + "\" text-anchor=\"" + std::string(anchor) + "\">" +
                escaped(text) + "</text>\n";
    }

    void addLine(std::string_view kind, double x1, double y1, double x2, double y2) {
        out_ += "<line class=\"" + std::string(kind) + "\" x1=\"" + number(x1) + "\" y1=\"" +
                number(y1) + "\" x2=\"" + number(x2) + "\" y2=\"" + number(y2) + "\"/>\n";
    }

    void addBar(std::size_t row, double y, double from, double to, bool isLight) {
        out_ += "<rect class=\"" + series(row) + "\" x=\"" + number(from) + "\" y=\"" + number(y) +
                "\" width=\"" + number(std::max(to - from, 0.0)) + "\" height=\"" +
                number(barHeight) + "\"" + (isLight ? " opacity=\"0.4\"" : "") + "/>\n";
    }

    void addHorizontalAxis(const Scale& scale, double from, double to, std::string_view name) {
        for (double value = 0; value <= scale.end + scale.step / 2; value += scale.step) {
            addLine("grid", scale.at(value), top, scale.at(value), bottom_);
            addText(scale.at(value), bottom_ + 18, "small", "middle", scale.label(value));
        }
        addLine("axis", from, bottom_, to, bottom_);
        addText((from + to) / 2, bottom_ + 40, "small", "middle", name);
    }

    void addBars() {
        addText(leftAxis, 56, "", "start", "Words erased per word of the final text");
        addText(leftAxis, 73, "small", "start", "lighter: only case or punctuation changed");
        double largest = 0;
        for (const StabilityRow& row : report_.rows)
            largest = std::max(largest, row.text.printed.erasedPerWord());
        const Scale scale(largest, leftAxis, leftEnd);
        addHorizontalAxis(scale, leftAxis, leftEnd, "normalised erasure");
        const double step = (bottom_ - top) / static_cast<double>(report_.rows.size());
        for (std::size_t i = 0; i < report_.rows.size(); ++i) {
            const StabilityRow& row = report_.rows[i];
            const double middle = top + step * (static_cast<double>(i) + 0.5);
            const double spoken = scale.at(row.text.spoken.erasedPerWord());
            const double printed = scale.at(row.text.printed.erasedPerWord());
            addBar(i, middle - barHeight / 2, leftAxis, spoken, false);
            addBar(i, middle - barHeight / 2, spoken, printed, true);
            addText(leftAxis - 10, middle + 4, "", "end", row.name);
            addText(std::max(spoken, printed) + 6, middle + 4, "small value", "start",
                    Text::fixed(row.text.printed.erasedPerWord(), 2));
        }
        addLine("axis", leftAxis, top, leftAxis, bottom_);
    }

    void addCurves() {
        addText(rightAxis, 56, "", "start", "Words settled, by the time since they first appeared");
        double largest = 0;
        for (const StabilityRow& row : report_.rows)
            largest = std::max(largest, Statistics::percentile(row.text.spoken.untilSettled, 0.95));
        const Scale scale(largest, rightAxis, rightEnd);
        addHorizontalAxis(scale, rightAxis, rightEnd, "seconds");
        for (int share = 0; share <= 100; share += 25) {
            const double y = bottom_ - (bottom_ - top) * share / 100;
            addLine(share == 0 ? "axis" : "grid", rightAxis, y, rightEnd, y);
            addText(rightAxis - 8, y + 4, "small", "end", std::to_string(share) + " %");
        }
        // The first is dashed and comes last, so that a curve which it meets shows through.
        for (std::size_t i = report_.rows.size(); i-- > 0;)
            addCurve(i, scale, report_.rows[i].text.spoken);
        addLegend();
    }

    void addCurve(std::size_t row, const Scale& scale, const Stability& spoken) {
        std::vector<double> times = spoken.untilSettled;
        if (times.empty())
            return;
        std::sort(times.begin(), times.end());
        std::string points;
        const auto add = [&](double time, std::size_t settled) {
            const double share = static_cast<double>(settled) / static_cast<double>(spoken.words);
            points +=
                number(scale.at(time)) + "," + number(bottom_ - (bottom_ - top) * share) + " ";
        };
        // A step for each word would be too fine to see.
        const std::size_t stride = std::max<std::size_t>(times.size() / 200, 1);
        add(0, 0);
        for (std::size_t i = stride - 1; i < times.size() && times[i] <= scale.end; i += stride)
            add(times[i], i + 1);
        out_ += "<polyline class=\"line " + series(row) + "\" points=\"" + points + "\"/>\n";
    }

    void addLegend() {
        const double x = rightEnd - 150;
        double y = bottom_ - 14 - 18 * (static_cast<double>(report_.rows.size()) - 1);
        out_ += "<rect class=\"paper\" opacity=\"0.85\" x=\"" + number(x - 10) + "\" y=\"" +
                number(y - 16) + "\" width=\"165\" height=\"" + number(bottom_ - y + 10) + "\"/>\n";
        for (std::size_t i = 0; i < report_.rows.size(); ++i, y += 18) {
            addLine("line " + series(i), x, y - 4, x + 26, y - 4);
            addText(x + 34, y, "small", "start", report_.rows[i].name);
        }
    }

    const StabilityReport& report_;
    double bottom_;
    std::string out_;
};

} // namespace

std::string svg(const StabilityReport& report) {
    return Drawing(report).svg();
}

} // namespace tessarune::StabilityPlot
