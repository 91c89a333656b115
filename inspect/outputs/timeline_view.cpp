#include "inspect/outputs/timeline_view.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "inspect/capture/number_text.h"
#include "inspect/outputs/page_parts.h"
#include "inspect/outputs/text_format.h"
#include "liblog_zol/name_tables.h"

namespace inspect {
namespace {

// The page's geometry, in CSS pixels.
constexpr double label_width = 260;
constexpr double plot_width = page_width - label_width - right_margin;
constexpr double overview_height = 34;
constexpr double lane_height = 16;
constexpr double click_row_height = 40;
constexpr double finger_row_height = 20;
constexpr double axis_height = 28;
constexpr double detail_height = 78;
constexpr double detail_gap = 12;
constexpr double detail_widest = 240;

struct category_colour {
  std::uint32_t category;
  std::string_view colour;
};

constexpr category_colour category_colours[] = {
    {0, "#7b5ea7"}, {1, "#8a8a8a"}, {2, "#1f78b4"}, {3, "#2c9f6b"}, {4, "#c2448f"},
    {5, "#d95f02"}, {6, "#6a6acd"}, {7, "#c0282d"}, {8, "#555555"},
};
constexpr std::string_view other_colour = "#a0a0a0";
constexpr std::uint32_t controller_category = zol::pkey_category;


std::string_view colour_of(std::uint32_t category) {
  for (const category_colour& c : category_colours)
    if (c.category == category) return c.colour;
  return other_colour;
}

class timeline_builder {
 public:
  timeline_builder(const capture_model& model, std::size_t harvest, std::string& out)
      : model_(model), index_(harvest), harvest_(model.harvests[harvest]), facts_(harvest_.facts), out_(out) {
    choose_window();
  }

  void build() {
    head();
    if (window_) {
      svg();
    } else {
      out_ += "<p class=\"missing\">Nothing to draw: the capture has neither a statistics "
              "record nor profile records.</p>\n";
    }
    checks();
    failures();
    out_ += "</body>\n</html>\n";
  }

 private:
  struct window {
    std::uint64_t from;
    std::uint64_t to;
    std::uint64_t zero;  // the axis's 0 ms
  };

  void choose_window() {
    std::optional<std::uint64_t> first, last;
    if (facts_.press) {
      for (const press_point& p : facts_.press->points) {
        if (!p.on_axis) continue;
        first = std::min(first.value_or(p.time), p.time);
        last = std::max(last.value_or(p.time), p.time);
      }
    }
    if (first) {
      const std::uint64_t from = *first;
      const std::uint64_t to = *last;
      const std::uint64_t pad = std::max<std::uint64_t>((to - from) / 20, 1000);
      const std::uint64_t zero = facts_.press->origin.value_or(from);
      window_ = window{from > pad ? from - pad : 0, to + pad, zero};
      axis_from_ = "finger on";
    } else if (facts_.first_record) {
      const std::uint64_t from = *facts_.first_record;
      const std::uint64_t to = std::max(*facts_.latest, from + 1);
      window_ = window{from, to, from};
      axis_from_ = "the first record";
    }
  }

  double x_of(std::uint64_t time) const {
    const double span = static_cast<double>(window_->to - window_->from);
    return label_width + static_cast<double>(time - window_->from) / span * plot_width;
  }

  bool inside(std::uint64_t time) const { return time >= window_->from && time <= window_->to; }

  void head() {
    std::string title = "Button press";
    std::optional<std::string> calendar;
    if (facts_.press) calendar = calendar_of(model_, facts_.press->stats.finger_on);
    if (!calendar && facts_.first_record) calendar = calendar_of(model_, *facts_.first_record);
    if (calendar) title += ", " + *calendar;
    append_page_head(out_, title, "svg .small{font-size:10px;fill:#555}\n");
    out_ += "</h1>\n<p class=\"sub\">";
    append_format(out_, "%zu profile records, harvest %zu of %zu", facts_.records.size(),
        index_ + 1, model_.harvests.size());
    if (facts_.press)
      append_format(out_, "; %llu clicks in the statistics record",
          static_cast<unsigned long long>(facts_.press->stats.click_count));
    if (window_) {
      out_ += "; time in ms from ";
      out_ += axis_from_;
    }
    out_ += ".</p>\n";
    for (const problem& m : facts_.missing) {
      out_ += "<p class=\"missing\">Missing: ";
      append_html(out_, problem_text(m));
      out_ += ".</p>\n";
    }
    if (facts_.off_axis != 0)
      append_format(out_, "<p class=\"missing\">%zu records lie too far from the press to draw "
                    "(sentinel or wild timestamps, or years older).</p>\n", facts_.off_axis);
    if (!facts_.damage.empty()) {
      append_format(out_, "<p class=\"bad\">The harvest is damaged in %zu places:</p>\n<ul>\n",
                    facts_.damage.size());
      for (const std::size_t i : facts_.damage) {
        const problem& d = model_.damage[i];
        out_ += "<li>";
        append_html(out_, (d.where().empty() ? "" : d.where() + ": ") + problem_text(d) + "; " +
                              std::string(problem_outcome(d)));
        out_ += "</li>\n";
      }
      out_ += "</ul>\n";
    }
  }

  double press_height() const {
    if (!facts_.press) return 0;
    return finger_row_height * (1 + facts_.press->clicks) +
           click_row_height * facts_.press->clicks + (edges().empty() ? 0 : detail_height);
  }

  // The steps from an edge to its asset, in press order.
  std::vector<const press_step*> edges() const {
    std::vector<const press_step*> list;
    for (unsigned k = 0; k < facts_.press->clicks; ++k)
      for (const step_kind kind : {step_kind::down_to_asset, step_kind::up_to_asset})
        if (const press_step* step = find(kind, k)) list.push_back(step);
    return list;
  }

  // Each edge and its asset magnified: the latency is microseconds, the
  // window above spans hundreds of milliseconds.
  void details(double top) {
    const std::vector<const press_step*> list = edges();
    if (list.empty()) return;
    const press_chain& chain = *facts_.press;
    const double count = static_cast<double>(list.size());
    const double width =
        std::min(detail_widest, (plot_width - detail_gap * (count - 1)) / count);
    append_format(out_, "<text x=\"4\" y=\"%.1f\" font-weight=\"bold\">each edge, magnified</text>\n",
                  top + 40);
    append_format(out_, "<text class=\"small\" x=\"4\" y=\"%.1f\">ticks: button-controller "
                  "records</text>\n", top + 54);
    for (std::size_t i = 0; i < list.size(); ++i) {
      const press_step& step = *list[i];
      const press_point& from = chain.points[step.from];
      const press_point& to = chain.points[step.to];
      const std::uint64_t latency = chain.duration(step);
      const std::uint64_t margin = std::max<std::uint64_t>(100, latency / 4);
      const std::uint64_t begin = from.time > margin ? from.time - margin : 0;
      const std::uint64_t end = to.time + margin;
      const double x0 = label_width + static_cast<double>(i) * (width + detail_gap);
      auto x = [&](std::uint64_t t) {
        return x0 + static_cast<double>(t - begin) / static_cast<double>(end - begin) * width;
      };
      append_format(out_,
                    "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" "
                    "fill=\"#f7f7f7\" stroke=\"#e0e0e0\"/>\n",
                    x0, top + 4, width, detail_height - 10);
      append_format(out_, "<text x=\"%.1f\" y=\"%.1f\" font-weight=\"bold\">", x0 + 4, top + 17);
      append_html(out_, point_label(from));
      out_ += "</text>\n";
      bar_at(x(from.time), x(to.time), top + 26, 12, asset_colour,
             step_label(step) + ": " + micro(latency));
      append_format(out_, "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"middle\" "
                    "font-weight=\"bold\">%s</text>\n",
                    (x(from.time) + x(to.time)) / 2, top + 52, micro(latency).c_str());
      std::vector<double> xs;
      for (const record_row& r : facts_.records)
        if (r.on_axis && r.category() == controller_category && r.timestamp >= begin && r.timestamp <= end)
          xs.push_back(std::round(x(r.timestamp) * 2) / 2);
      ticks(xs, top + 56, 10, colour_of(controller_category));
      if (from.match && from.match->offset != 0)
        append_format(out_,
                      "<text class=\"small\" x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">"
                      "checkpoint %+lld µs</text>\n",
                      x0 + width - 4, top + 17, static_cast<long long>(from.match->offset));
    }
  }

  void svg() {
    const double press_top = overview_height + 12;
    const double lanes_top = press_top + press_height() + (facts_.press ? 10 : 0);
    const double axis_top = lanes_top + lane_height * static_cast<double>(facts_.lanes.size());
    const double height = axis_top + axis_height;
    append_format(out_,
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
        "viewBox=\"0 0 %.0f %.0f\" role=\"img\">\n",
        page_width, height, page_width, height);
    append_format(out_, "<rect x=\"0\" y=\"0\" width=\"%.0f\" height=\"%.0f\" fill=\"#ffffff\"/>\n",
        page_width, height);
    overview();
    grid(press_top, axis_top);
    if (facts_.press) press(press_top);
    lanes(lanes_top);
    axis(axis_top);
    out_ += "</svg>\n";
  }

  // The whole capture in one strip, with the window drawn on it.
  void overview() {
    std::uint64_t from = window_->from;
    std::uint64_t to = window_->to;
    if (facts_.earliest) from = std::min(from, *facts_.earliest);
    if (facts_.latest) to = std::max(to, *facts_.latest);
    const double span = static_cast<double>(std::max<std::uint64_t>(to - from, 1));
    auto x = [&](std::uint64_t t) {
      return label_width + static_cast<double>(t - from) / span * plot_width;
    };
    append_format(out_, "<text x=\"4\" y=\"20\">whole capture, %s ms</text>\n",
        milliseconds_text(static_cast<std::int64_t>(to - from)).c_str());
    append_format(out_,
        "<rect x=\"%.1f\" y=\"6\" width=\"%.1f\" height=\"22\" fill=\"#f3f3f3\" "
        "stroke=\"#d0d0d0\"/>\n",
        label_width, plot_width);
    std::vector<double> xs;
    xs.reserve(facts_.records.size());
    for (const record_row& r : facts_.records)
      if (r.on_axis) xs.push_back(std::round(x(r.timestamp) * 2) / 2);
    ticks(xs, 8, 18, "#909090");
    append_format(out_,
        "<rect x=\"%.1f\" y=\"4\" width=\"%.1f\" height=\"26\" fill=\"none\" stroke=\"%s\" "
        "stroke-width=\"1.5\"><title>the window drawn below</title></rect>\n",
        x(window_->from), std::max(x(window_->to) - x(window_->from), 1.5),
        std::string(asset_colour).c_str());
  }

  // One path of vertical ticks at the given x, each once.
  void ticks(std::vector<double>& xs, double top, double height, std::string_view colour) {
    if (xs.empty()) return;
    std::sort(xs.begin(), xs.end());
    xs.erase(std::unique(xs.begin(), xs.end()), xs.end());
    out_ += "<path stroke=\"";
    out_ += colour;
    out_ += "\" stroke-width=\"1\" d=\"";
    for (const double x : xs) append_format(out_, "M%.1f %.1fv%.1f", x, top, height);
    out_ += "\"/>\n";
  }

  // Vertical lines at the press points, through the press rows and the lanes.
  void grid(double top, double bottom) {
    const std::uint64_t span = window_->to - window_->from;
    const std::uint64_t step = axis_step(span);
    const std::int64_t start = static_cast<std::int64_t>(window_->from - window_->zero);
    const std::int64_t end = static_cast<std::int64_t>(window_->to - window_->zero);
    const auto s = static_cast<std::int64_t>(step);
    out_ += "<path stroke=\"#eeeeee\" stroke-width=\"1\" d=\"";
    for (std::int64_t t = (start / s) * s; t <= end; t += s) {
      const std::uint64_t time = window_->zero + static_cast<std::uint64_t>(t);
      if (inside(time)) append_format(out_, "M%.1f %.1fV%.1f", x_of(time), top, bottom);
    }
    out_ += "\"/>\n";
    if (!facts_.press) return;
    out_ += "<path stroke=\"#d8c0a0\" stroke-width=\"1\" stroke-dasharray=\"3 3\" d=\"";
    for (const press_point& p : facts_.press->points)
      if (click_point(p.kind) && inside(p.time))
        append_format(out_, "M%.1f %.1fV%.1f", x_of(p.time), top, bottom);
    out_ += "\"/>\n";
  }

  // At least 2 px wide, so that a latency of microseconds still shows.
  void bar_at(double x0, double x1, double y, double height, std::string_view colour,
              const std::string& tip) {
    append_format(out_,
                  "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"%s\">",
                  x0, y, std::max(x1 - x0, 2.0), height, std::string(colour).c_str());
    out_ += "<title>";
    append_html(out_, tip);
    out_ += "</title></rect>\n";
  }

  void bar(double y, double height, std::uint64_t from, std::uint64_t to, std::string_view colour,
           const std::string& tip) {
    bar_at(x_of(from), x_of(to), y, height, colour, tip);
  }

  // A label right of `x`, or left of it when it would run off the plot.
  void label(double x, double y, const std::string& text, bool bold = false) {
    const double room = page_width - right_margin - x;
    const bool left = room < 7.0 * static_cast<double>(text.size());
    append_format(out_, "<text x=\"%.1f\" y=\"%.1f\"%s%s>", left ? x - 4 : x + 4, y,
        left ? " text-anchor=\"end\"" : "", bold ? " font-weight=\"bold\"" : "");
    append_html(out_, text);
    out_ += "</text>\n";
  }

  // A step both of whose points the axis holds.
  const press_step* find(step_kind kind, unsigned click) const {
    const press_step* step = facts_.find_step(kind, click);
    if (step == nullptr || !facts_.press->points[step->from].on_axis ||
        !facts_.press->points[step->to].on_axis)
      return nullptr;
    return step;
  }

  std::string micro(std::uint64_t value) const { return std::to_string(value) + " µs"; }

  void press(double top) {
    const press_chain& chain = *facts_.press;
    double y = top;
    append_format(out_, "<text x=\"4\" y=\"%.1f\" font-weight=\"bold\">finger</text>\n", y + 13);
    if (const auto& touch = chain.touch; touch && inside(touch->on) && inside(touch->off)) {
      bar(y + 4, 10, touch->on, touch->off, "#cfe2f0", "finger on the button: " + micro(touch->off - touch->on));
      label(x_of(touch->off), y + 13,
            "finger off " + milliseconds_text(static_cast<std::int64_t>(touch->off - touch->on)) + " ms");
    }
    y += finger_row_height;
    for (unsigned k = 0; k < chain.clicks; ++k) {
      const std::string name = "click " + std::to_string(k + 1);
      if (const press_step* step = find(step_kind::finger_to_down, k)) {
        const std::uint64_t d = chain.duration(*step);
        append_format(out_, "<text x=\"4\" y=\"%.1f\">finger on → %s down</text>\n", y + 13, name.c_str());
        bar(y + 4, 10, chain.points[step->from].time, chain.points[step->to].time, finger_colour,
            step_label(*step) + ": " + micro(d));
        label(x_of(chain.points[step->to].time), y + 13, micro(d), true);
      }
      y += finger_row_height;
    }
    for (unsigned k = 0; k < chain.clicks; ++k) {
      const std::string name = "click " + std::to_string(k + 1);
      append_format(out_, "<text x=\"4\" y=\"%.1f\" font-weight=\"bold\">%s</text>\n", y + 24,
          name.c_str());
      if (const press_step* held = find(step_kind::held, k)) {
        const std::uint64_t from = chain.points[held->from].time;
        const std::uint64_t to = chain.points[held->to].time;
        bar(y + 17, 8, from, to, held_colour, name + " held: " + micro(chain.duration(*held)));
        const std::string text = "held " + micro(chain.duration(*held));
        if (x_of(to) - x_of(from) > 7.0 * static_cast<double>(text.size()))
          append_format(out_, "<text class=\"small\" x=\"%.1f\" y=\"%.1f\" "
                        "text-anchor=\"middle\">%s</text>\n",
                        (x_of(from) + x_of(to)) / 2, y + 35, text.c_str());
      }
      const struct {
        step_kind kind;
        std::string_view edge;
        double text_y;
      } edges[] = {{step_kind::down_to_asset, "down → asset", 11},
                   {step_kind::up_to_asset, "up → asset", 37}};
      for (const auto& edge : edges) {
        const press_step* step = find(edge.kind, k);
        if (!step) continue;
        const std::uint64_t from = chain.points[step->from].time;
        const std::uint64_t to = chain.points[step->to].time;
        bar(y + 14, 14, from, to, asset_colour, step_label(*step) + ": " + micro(chain.duration(*step)));
        label(x_of(from), y + edge.text_y,
              std::string(edge.edge) + " " + micro(chain.duration(*step)), true);
      }
      y += click_row_height;
    }
    details(y);
  }

  void lanes(double top) {
    double y = top;
    for (std::size_t i = 0; i < facts_.lanes.size(); ++i, y += lane_height) {
      const lane& l = facts_.lanes[i];
      if (i % 2 == 0)
        append_format(out_, "<rect x=\"0\" y=\"%.1f\" width=\"%.0f\" height=\"%.0f\" fill=\"#fafafa\"/>\n",
            y, page_width, lane_height);
      std::size_t outside = 0;
      std::vector<double> xs;
      for (const record_row& r : facts_.records) {
        if (r.category() != l.category || r.component() != l.component) continue;
        if (r.on_axis && inside(r.timestamp))
          xs.push_back(std::round(x_of(r.timestamp) * 2) / 2);
        else
          ++outside;
      }
      append_format(out_, "<text x=\"4\" y=\"%.1f\">", y + 12);
      append_html(out_, l.category_name + " · " + l.component_name);
      out_ += "</text>";
      append_format(out_, "<text class=\"small\" x=\"%.1f\" y=\"%.1f\" text-anchor=\"end\">%zu", label_width - 6,
          y + 12, l.span.count);
      if (outside != 0) append_format(out_, " (%zu outside)", outside);
      out_ += "</text>\n";
      ticks(xs, y + 2, lane_height - 4, colour_of(l.category));
    }
  }

  void axis(double top) {
    append_format(out_, "<path stroke=\"#606060\" d=\"M%.1f %.1fH%.1f\"/>\n", label_width, top + 2,
        label_width + plot_width);
    const std::uint64_t step = axis_step(window_->to - window_->from);
    const auto s = static_cast<std::int64_t>(step);
    const std::int64_t start = static_cast<std::int64_t>(window_->from - window_->zero);
    const std::int64_t end = static_cast<std::int64_t>(window_->to - window_->zero);
    for (std::int64_t t = (start / s) * s; t <= end; t += s) {
      const std::uint64_t time = window_->zero + static_cast<std::uint64_t>(t);
      if (!inside(time)) continue;
      const double x = x_of(time);
      append_format(out_, "<path stroke=\"#606060\" d=\"M%.1f %.1fv5\"/>", x, top + 2);
      std::string text = milliseconds_text(t);
      while (text.back() == '0') text.pop_back();
      if (text.back() == '.') text.pop_back();
      append_format(out_, "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"middle\">%s</text>\n", x, top + 19,
          text.c_str());
    }
    append_format(out_, "<text x=\"4\" y=\"%.1f\">ms from %s</text>\n", top + 19, axis_from_.c_str());
  }

  void checks() {
    if (!facts_.press) return;
    const press_chain& chain = *facts_.press;
    out_ += "<h2>Statistics record against the checkpoint records</h2>\n<ul>\n";
    if (chain.checked && chain.disagreements.empty()) {
      append_format(out_, "<li>They agree (within %llu µs).</li>\n",
          static_cast<unsigned long long>(checkpoint_tolerance_us));
    }
    for (const problem& d : chain.disagreements) {
      out_ += "<li class=\"bad\">Disagrees: ";
      append_html(out_, problem_text(d));
      out_ += "</li>\n";
    }
    for (const problem& n : chain.notes) {
      out_ += "<li>";
      append_html(out_, problem_text(n));
      out_ += "</li>\n";
    }
    out_ += "</ul>\n";
  }

  void failures() {
    const auto& list = harvest_.failures;
    append_format(out_, "<h2>Failure lines: %zu</h2>\n", list.size());
    if (list.empty()) return;
    out_ += "<ul>\n";
    for (const failure_line& f : list) {
      append_format(out_, "<li>line %llu: <code>", static_cast<unsigned long long>(f.line));
      append_html(out_, f.text);
      out_ += "</code><br>";
      append_html(out_, f.meaning);
      out_ += "</li>\n";
    }
    out_ += "</ul>\n";
  }

  const capture_model& model_;
  std::size_t index_;
  const harvest_model& harvest_;
  const harvest_facts& facts_;
  std::string& out_;
  std::optional<window> window_;
  std::string axis_from_;
};

}  // namespace

void write_timeline(const capture_model& model, std::size_t harvest, std::string& out) {
  timeline_builder(model, harvest, out).build();
}

}  // namespace inspect
