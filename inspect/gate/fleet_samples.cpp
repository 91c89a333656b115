#include "inspect/gate/fleet_samples.h"

#include <simdjson.h>

#include <algorithm>
#include <charconv>

namespace inspect::gate {
namespace {

namespace od = simdjson::ondemand;

// A u64 of the tables: a number, or its digits as a string from 2^53 on.
// A count or an index: an unsigned integer, as a number or a string of
// digits; none for anything else (a fraction, a sign, a number too large).
std::optional<std::uint64_t> count_of(od::value value) {
  od::json_type type;
  if (value.type().get(type) != simdjson::SUCCESS) return std::nullopt;
  std::uint64_t v = 0;
  if (type == od::json_type::number) {
    if (value.get_uint64().get(v) == simdjson::SUCCESS) return v;
  } else if (type == od::json_type::string) {
    std::string_view text;
    if (value.get_string().get(text) == simdjson::SUCCESS &&
        std::from_chars(text.data(), text.data() + text.size(), v).ptr == text.data() + text.size() &&
        !text.empty())
      return v;
  }
  return std::nullopt;
}

std::optional<double> number_of(od::value value) {
  od::json_type type;
  if (value.type().get(type) != simdjson::SUCCESS) return std::nullopt;
  if (type == od::json_type::number) {
    double v;
    if (value.get_double().get(v) == simdjson::SUCCESS) return v;
  } else if (type == od::json_type::string) {
    std::string_view text;
    std::uint64_t v;
    if (value.get_string().get(text) == simdjson::SUCCESS &&
        std::from_chars(text.data(), text.data() + text.size(), v).ec == std::errc{})
      return static_cast<double>(v);
  }
  return std::nullopt;
}

std::optional<std::string> text_of(od::value value) {
  std::string_view text;
  if (value.get_string().get(text) != simdjson::SUCCESS) return std::nullopt;
  return std::string(text);
}

using labels = std::map<std::string, std::string, std::less<>>;

// What a row says of the harvest and capture it belongs to.
struct identity {
  std::string capture, sha256;
  std::uint64_t harvest = 0;
  bool has_capture = false, has_harvest = false;

  // Fields that name the row; false when `key` is not one of them.
  bool take(std::string_view key, od::value value) {
    if (key == "capture") {
      auto text = text_of(value);
      has_capture = text.has_value();
      capture = text.value_or("");
    } else if (key == "capture_sha256") {
      sha256 = text_of(value).value_or("");
    } else if (key == "harvest") {
      const auto number = count_of(value);
      has_harvest = number.has_value();
      harvest = number.value_or(0);
    } else {
      return false;
    }
    return true;
  }
  // The side too: one folder may be given as both.
  std::string capture_key(const row_place& place) const {
    return std::to_string(place.side) + '\n' + place.group + '\n' + capture + '\n' + sha256;
  }
  std::string harvest_key(const row_place& place) const {
    return capture_key(place) + '\n' + std::to_string(harvest);
  }
};

struct click_values {
  std::uint64_t click = 0;
  std::array<std::optional<double>, latency_names.size()> latency;
};

struct category_rate {
  std::string category;
  double records = 0, span_us = 0;
};

// The parser and a padded copy of the line, reused row after row.
struct line_parser {
  od::parser parser;
  std::string buffer;
  simdjson::simdjson_result<od::document> parse(std::string_view line) {
    buffer.assign(line);
    buffer.resize(line.size() + simdjson::SIMDJSON_PADDING);
    return parser.iterate(buffer.data(), line.size(), buffer.size());
  }
};

line_parser& shared_parser() {
  thread_local line_parser parser;
  return parser;
}

template <class F>
bool each_field(od::object object, F&& f) {
  for (auto field : object) {
    std::string_view key;
    od::value value;
    if (field.unescaped_key().get(key) != simdjson::SUCCESS ||
        field.value().get(value) != simdjson::SUCCESS)
      return false;
    if (!f(key, value)) return false;
  }
  return true;
}

// Each object of an array: its fields, then `end`.
template <class F, class E>
bool each_object(od::value value, F&& field, E&& end) {
  od::array array;
  if (value.get_array().get(array) != simdjson::SUCCESS) return false;
  for (auto item : array) {
    od::object object;
    if (item.get_object().get(object) != simdjson::SUCCESS || !each_field(object, field))
      return false;
    end();
  }
  return true;
}

void add_once(std::vector<std::string>& set, std::string_view item) {
  if (std::find(set.begin(), set.end(), item) == set.end()) set.emplace_back(item);
}

}  // namespace

std::optional<label_split> parse_split(std::string_view text) {
  const auto equals = text.find('=');
  if (equals == std::string_view::npos || equals == 0) return std::nullopt;
  const auto comma = text.find(',', equals);
  if (comma == std::string_view::npos || comma == equals + 1 || comma + 1 == text.size() ||
      text.find(',', comma + 1) != std::string_view::npos)
    return std::nullopt;
  return label_split{std::string(text.substr(0, equals)),
                     {std::string(text.substr(equals + 1, comma - equals - 1)),
                      std::string(text.substr(comma + 1))}};
}

std::string click_metric(std::string_view latency, std::uint64_t click) {
  return std::string(latency) + ".click" + std::to_string(click);
}

int sample_builder::side_of(const row_place& place, const labels& row_labels) const {
  if (!split_) return place.side;
  std::string_view value;
  bool found = false;
  if (const auto it = row_labels.find(split_->key); it != row_labels.end()) {
    value = it->second;
    found = true;
  }
  for (const auto& [key, folder_value] : place.partition)
    if (!found && key == split_->key) {
      value = folder_value;
      found = true;
    }
  if (!found) return -1;
  for (int s = 0; s < 2; ++s)
    if (value == split_->values[static_cast<std::size_t>(s)]) return s;
  return -1;
}

void sample_builder::add_row(table_kind table, std::string_view line, const row_place& place,
                             std::uint64_t line_number) {
  while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
  if (line.empty()) return;
  switch (table) {
    case table_kind::harvests: add_harvest(line, place, line_number); break;
    case table_kind::failures: add_failure(line, place, line_number); break;
    case table_kind::unreadable: add_unreadable(line, place, line_number); break;
  }
}

void sample_builder::add_harvest(std::string_view line, const row_place& place,
                                 std::uint64_t number) {
  auto document = shared_parser().parse(line);
  od::object object;
  if (document.get_object().get(object) != simdjson::SUCCESS) {
    faults_.push_back({table_kind::harvests, place.group, number, row_fault::kind::not_json});
    return;
  }
  identity id;
  std::vector<click_values> clicks;
  std::vector<category_rate> rates;
  std::vector<std::string> damage;
  labels row_labels;
  std::optional<double> lost;
  click_values click;
  category_rate rate;
  const bool read = each_field(object, [&](std::string_view key, od::value value) {
    if (id.take(key, value)) return true;
    if (key == "clicks")
      return each_object(
          value,
          [&](std::string_view k, od::value v) {
            if (k == "click") click.click = count_of(v).value_or(0);
            for (std::size_t l = 0; l < latency_names.size(); ++l)
              if (k == latency_names[l]) click.latency[l] = number_of(v);
            return true;
          },
          [&] { clicks.push_back(std::exchange(click, {})); });
    if (key == "records_by_category")
      return each_object(
          value,
          [&](std::string_view k, od::value v) {
            if (k == "category") rate.category = text_of(v).value_or("");
            if (k == "records") rate.records = number_of(v).value_or(0);
            if (k == "span_us") rate.span_us = number_of(v).value_or(0);
            return true;
          },
          [&] { rates.push_back(std::exchange(rate, {})); });
    if (key == "damage") {
      std::string kind = "unknown";
      return each_object(
          value,
          [&](std::string_view k, od::value v) {
            if (k == "kind") kind = text_of(v).value_or("unknown");
            return true;
          },
          [&] { add_once(damage, std::exchange(kind, "unknown")); });
    }
    if (key == "labels") {
      od::object object_labels;
      if (value.get_object().get(object_labels) != simdjson::SUCCESS) return true;  // null
      return each_field(object_labels, [&](std::string_view k, od::value v) {
        if (auto text = text_of(v)) row_labels.emplace(std::string(k), std::move(*text));
        return true;
      });
    }
    if (key == "sequence_lost") lost = number_of(value);
    return true;
  });
  if (!read || !id.has_capture || !id.has_harvest) {
    faults_.push_back({table_kind::harvests, place.group, number,
                       read ? row_fault::kind::not_a_row : row_fault::kind::not_json});
    return;
  }
  const int side = side_of(place, row_labels);
  harvests_.emplace(id.harvest_key(place), harvest_entry{side, {}});
  auto [capture, new_capture] = captures_.try_emplace(id.capture_key(place), capture_entry{side, {}});
  for (const std::string& kind : damage) add_once(capture->second.damage, kind);
  if (side < 0) return;
  side_samples& samples = sides_[static_cast<std::size_t>(side)];
  ++samples.harvests;
  for (const click_values& c : clicks)
    for (std::size_t l = 0; l < latency_names.size(); ++l)
      if (c.latency[l] && c.click > 0) {
        const std::string name = click_metric(latency_names[l], c.click);
        auto it = samples.values.find(name);
        if (it == samples.values.end()) it = samples.values.emplace(name, std::vector<double>{}).first;
        it->second.push_back(*c.latency[l]);
      }
  for (const category_rate& r : rates)
    if (r.span_us > 0 && !r.category.empty())
      samples.values["records_per_second." + r.category].push_back(r.records * 1e6 / r.span_us);
  if (lost) {
    samples.values["sequence_lost"].push_back(*lost);
    samples.harvests_with["losing_records"] += *lost > 0 ? 1 : 0;
  }
}

void sample_builder::add_failure(std::string_view line, const row_place& place,
                                 std::uint64_t number) {
  auto document = shared_parser().parse(line);
  od::object object;
  identity id;
  std::optional<std::string> request;
  if (document.get_object().get(object) != simdjson::SUCCESS ||
      !each_field(object, [&](std::string_view key, od::value value) {
        if (!id.take(key, value) && key == "request") request = text_of(value);
        return true;
      })) {
    faults_.push_back({table_kind::failures, place.group, number, row_fault::kind::not_json});
    return;
  }
  if (!id.has_capture || !id.has_harvest || !request) {
    faults_.push_back({table_kind::failures, place.group, number, row_fault::kind::not_a_row});
    return;
  }
  const auto found = harvests_.find(id.harvest_key(place));
  if (found == harvests_.end()) {
    faults_.push_back({table_kind::failures, place.group, number, row_fault::kind::no_such_harvest});
    return;
  }
  add_once(found->second.failed, *request);
}

void sample_builder::add_unreadable(std::string_view line, const row_place& place,
                                    std::uint64_t number) {
  auto document = shared_parser().parse(line);
  od::object object;
  identity id;
  if (document.get_object().get(object) != simdjson::SUCCESS ||
      !each_field(object, [&](std::string_view key, od::value value) {
        id.take(key, value);
        return true;
      })) {
    faults_.push_back({table_kind::unreadable, place.group, number, row_fault::kind::not_json});
    return;
  }
  if (!id.has_capture) {
    faults_.push_back({table_kind::unreadable, place.group, number, row_fault::kind::not_a_row});
    return;
  }
  // No harvest, so no labels: only a partition or a side read whole places it.
  const int side = side_of(place, {});
  auto& entry = captures_.try_emplace(id.capture_key(place), capture_entry{side, {}}).first->second;
  add_once(entry.damage, "unreadable");
}

std::array<side_samples, 2> sample_builder::finish() {
  for (const auto& [key, harvest] : harvests_) {
    if (harvest.side < 0) continue;
    for (const std::string& request : harvest.failed)
      ++sides_[static_cast<std::size_t>(harvest.side)].harvests_with["failed." + request];
  }
  for (const auto& [key, capture] : captures_) {
    if (capture.side < 0) continue;
    side_samples& samples = sides_[static_cast<std::size_t>(capture.side)];
    ++samples.captures;
    samples.captures_with["damaged.any"] += capture.damage.empty() ? 0 : 1;
    for (const std::string& kind : capture.damage) ++samples.captures_with["damaged." + kind];
  }
  harvests_.clear();
  captures_.clear();
  return std::move(sides_);
}

}  // namespace inspect::gate
