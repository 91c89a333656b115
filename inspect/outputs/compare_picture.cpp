// Both presses of a comparison on one time axis from finger on, B under A,
// then each latency of A above B's with the difference labelled: the
// picture at the top of the compare page.

#include "inspect/outputs/compare_picture.h"

#include <algorithm>
#include <array>

#include "inspect/capture/number_text.h"
#include "inspect/outputs/compare_printer.h"
#include "inspect/outputs/page_parts.h"
#include "inspect/outputs/text_format.h"

namespace inspect {
namespace {

// The page's geometry, in CSS pixels.
constexpr double label_width = 220;
constexpr double plot_width = page_width - label_width - right_margin;
constexpr double side_title_height = 24;
constexpr double finger_row_height = 20;
constexpr double click_row_height = 34;
constexpr double axis_height = 30;
constexpr double latency_title_height = 30;
constexpr double latency_row_height = 32;
constexpr double latency_bar_widest = 560;

constexpr std::string_view touch_colour = "#cfe2f0";
constexpr std::string_view a_colour = "#7b5ea7";
constexpr std::string_view b_colour = "#2c9f6b";
// Inline, as the page's style would lose to a presentation attribute.
constexpr std::string_view warning_style = "style=\"fill:#b00020\"";

// One side's press, its times from its own finger on.
struct drawn_press {
  const press_chain* chain = nullptr;
  std::uint64_t zero = 0;

  std::int64_t at(std::uint64_t time) const { return static_cast<std::int64_t>(time - zero); }
};

drawn_press drawn(const compare_side& side) {
  drawn_press d;
  const harvest_facts& facts = side.in().facts;
  if (!facts.press) return d;
  d.chain = &*facts.press;
  d.zero = d.chain->origin.value_or(0);
  return d;
}

class press_picture {
 public:
  press_picture(const comparison& c, std::string& out)
      : c_(c), out_(out), sides_{drawn(c.a), drawn(c.b)} {}

  void draw() {
    choose_window();
    double rows = 0;
    for (const drawn_press& side : sides_)
      rows += side_title_height +
              (side.chain ? finger_row_height + click_row_height * side.chain->clicks : 0);
    const double latency_top = 10 + rows + axis_height;
    const double height = latency_top + latency_title_height +
                          latency_row_height * static_cast<double>(c_.press.latencies.size()) + 10;
    append_format(out_,
                  "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
                  "viewBox=\"0 0 %.0f %.0f\" role=\"img\">\n",
                  page_width, height, page_width, height);
    append_format(out_, "<rect x=\"0\" y=\"0\" width=\"%.0f\" height=\"%.0f\" fill=\"#ffffff\"/>\n",
                  page_width, height);
    double y = 10;
    for (std::size_t s = 0; s < sides_.size(); ++s) y = side_rows(s, y);
    axis(y);
    latencies(latency_top);
    out_ += "</svg>\n";
  }

 private:
  // At least 2 px wide, so that a latency of microseconds still shows.
  void bar(double x0, double x1, double y, double height, std::string_view colour,
           const std::string& tip) {
    append_format(out_, "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"%s\">",
                  x0, y, std::max(x1 - x0, 2.0), height, std::string(colour).c_str());
    out_ += "<title>";
    append_html(out_, tip);
    out_ += "</title></rect>\n";
  }

  void text(double x, double y, const std::string& words, std::string_view attributes = {}) {
    append_format(out_, "<text x=\"%.1f\" y=\"%.1f\"", x, y);
    if (!attributes.empty()) {
      out_ += ' ';
      out_ += attributes;
    }
    out_ += '>';
    append_html(out_, words);
    out_ += "</text>\n";
  }

  double x_of(std::int64_t at) const {
    return label_width +
           static_cast<double>(at - from_) / static_cast<double>(to_ - from_) * plot_width;
  }

  void choose_window() {
    from_ = 0;
    to_ = 1;
    for (const drawn_press& side : sides_) {
      if (!side.chain) continue;
      for (const press_point& p : side.chain->points) {
        if (!p.on_axis) continue;
        from_ = std::min(from_, side.at(p.time));
        to_ = std::max(to_, side.at(p.time));
      }
    }
    const std::int64_t pad = std::max<std::int64_t>((to_ - from_) / 20, 1000);
    from_ -= pad;
    to_ += pad;
  }

  // One capture's press: its finger, then a row a click with the finger's
  // way down, the time held and the assets. B's rows say how they differ.
  double side_rows(std::size_t s, double y) {
    const drawn_press& side = sides_[s];
    const std::string name = s == 0 ? "A" : "B";
    const std::string_view colour = s == 0 ? a_colour : b_colour;
    append_format(out_, "<rect x=\"0\" y=\"%.1f\" width=\"6\" height=\"%.1f\" fill=\"%s\"/>\n",
                  y + 4,
                  side_title_height - 8 +
                      (side.chain ? finger_row_height + click_row_height * side.chain->clicks : 0),
                  std::string(colour).c_str());
    text(12, y + 16, name + ": " + input_label((s == 0 ? c_.a : c_.b).model->input),
         "font-weight=\"bold\"");
    y += side_title_height;
    if (!side.chain) {
      text(label_width, y - 8, "no statistics record", std::string(warning_style));
      return y;
    }
    const press_chain& chain = *side.chain;
    text(12, y + 13, "finger");
    if (chain.touch)
      bar(x_of(side.at(chain.touch->on)), x_of(side.at(chain.touch->off)), y + 4, 10, touch_colour,
          "finger on the button: " + micros_text(chain.touch->off - chain.touch->on));
    y += finger_row_height;
    const harvest_facts& facts = (s == 0 ? c_.a : c_.b).in().facts;
    for (unsigned k = 0; k < chain.clicks; ++k) {
      text(12, y + 20, "click " + std::to_string(k + 1));
      std::string differences;
      for (const latency_change& l : c_.press.latencies) {
        if (l.click != k) continue;
        if (const press_step* step = facts.find_step(l.step, k); step && on_axis(chain, *step)) {
          const bool asset = l.step == step_kind::down_to_asset || l.step == step_kind::up_to_asset;
          const double top = l.step == step_kind::finger_to_down ? y + 3 : y + 12;
          bar(x_of(side.at(chain.points[step->from].time)),
              x_of(side.at(chain.points[step->to].time)), top,
              l.step == step_kind::finger_to_down ? 6 : 12,
              asset                       ? asset_colour
              : l.step == step_kind::held ? held_colour
                                          : finger_colour,
              l.label + ": " + micros_text(chain.duration(*step)));
        }
        if (s == 1 && l.difference && *l.difference != 0)
          differences +=
              (differences.empty() ? "" : ", ") + l.label + " " + signed_micro_text(*l.difference);
      }
      if (!differences.empty())
        text(page_width - right_margin, y + 30, "B − A: " + differences,
             "text-anchor=\"end\" " + std::string(warning_style));
      y += click_row_height;
    }
    return y;
  }

  static bool on_axis(const press_chain& chain, const press_step& step) {
    return chain.points[step.from].on_axis && chain.points[step.to].on_axis;
  }

  void axis(double top) {
    append_format(out_, "<path stroke=\"#606060\" d=\"M%.1f %.1fH%.1f\"/>\n", label_width, top + 2,
                  label_width + plot_width);
    const auto step = static_cast<std::int64_t>(axis_step(static_cast<std::uint64_t>(to_ - from_)));
    for (std::int64_t t = (from_ / step) * step; t <= to_; t += step) {
      if (t < from_) continue;
      append_format(out_, "<path stroke=\"#606060\" d=\"M%.1f %.1fv5\"/>", x_of(t), top + 2);
      std::string label = milliseconds_text(t);
      while (label.back() == '0') label.pop_back();
      if (label.back() == '.') label.pop_back();
      text(x_of(t), top + 19, label, "text-anchor=\"middle\"");
    }
    text(12, top + 19, "ms from finger on");
  }

  // Each latency of A above B's, scaled to the longer of the two: a
  // difference of microseconds shows where the time axis cannot show it.
  void latencies(double top) {
    text(12, top + 18, "each latency, A above B", "font-weight=\"bold\"");
    double y = top + latency_title_height;
    for (const latency_change& l : c_.press.latencies) {
      text(12, y + 18, l.label);
      const double longest =
          static_cast<double>(std::max<std::uint64_t>({l.a.value_or(0), l.b.value_or(0), 1}));
      const auto width = [&](std::uint64_t v) {
        return static_cast<double>(v) / longest * latency_bar_widest;
      };
      if (l.a)
        bar(label_width, label_width + width(*l.a), y + 3, 11, a_colour,
            "A " + l.label + ": " + micros_text(*l.a));
      if (l.b)
        bar(label_width, label_width + width(*l.b), y + 16, 11, b_colour,
            "B " + l.label + ": " + micros_text(*l.b));
      std::string note = micros_text(l.a) + " → " + micros_text(l.b);
      if (l.difference)
        note += "   " + signed_micro_text(*l.difference) + " (" + percent_text(l.percent) + ")";
      if (l.result != verdict::same) note += "   " + std::string(verdict_label(l.result));
      const bool bad = l.result == verdict::differs;
      text(label_width + latency_bar_widest + 12, y + 18, note,
           bad ? std::string(warning_style) + " font-weight=\"bold\"" : "");
      y += latency_row_height;
    }
  }

  const comparison& c_;
  std::string& out_;
  std::array<drawn_press, 2> sides_;
  std::int64_t from_ = 0, to_ = 1;  // the window, µs from finger on
};

}  // namespace

void write_press_picture(const comparison& c, std::string& out) { press_picture(c, out).draw(); }

}  // namespace inspect
