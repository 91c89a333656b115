#include "inspect/capture/report_writer.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <map>
#include <span>

#include "inspect/capture/failure_meaning.h"
#include "liblog_zol/name_tables.h"
#include "liblog_zol/profile_decoder.h"
#include "quandor/layouts/record_layouts.h"

namespace inspect {
namespace {

using json = nlohmann::ordered_json;

std::string hex_text(std::uint64_t value) {
  char digits[20];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
  return "0x" + std::string(digits, end);
}

std::string hex_bytes(std::span<const std::uint8_t> bytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += digits[byte >> 4];
    text += digits[byte & 0xf];
  }
  return text;
}

json value_json(const layouts::field_value& value) {
  return std::visit([](const auto& v) {
    if constexpr (std::is_same_v<std::decay_t<decltype(v)>, std::string_view>)
      return json(std::string(v));
    else
      return json(v);
  }, value);
}

// Named fields as an object; fields of an array gather in order.
json fields_json(const std::vector<layouts::named_field>& fields) {
  json object = json::object();
  for (const layouts::named_field& field : fields) {
    const std::string name(field.name);
    if (field.index) {
      if (!object.contains(name)) object[name] = json::array();
      object[name].push_back(value_json(field.value));
    } else {
      object[name] = value_json(field.value);
    }
  }
  return object;
}

// Table entries: one object an index.
json entries_json(const std::vector<layouts::named_field>& fields) {
  json entries = json::array();
  std::map<std::size_t, std::size_t> at;
  for (const layouts::named_field& field : fields) {
    const std::size_t index = field.index.value_or(0);
    auto [found, added] = at.try_emplace(index, entries.size());
    if (added) entries.push_back(json{{"entry", index}});
    entries[found->second][std::string(field.name)] = value_json(field.value);
  }
  return entries;
}

// Each click's edges side by side, from the record's arrays.
json clicks_json(const json& stats) {
  json clicks = json::array();
  for (std::size_t click = 0; click < 3; ++click) {
    json one{{"click", click + 1}};
    for (const auto& [array, down, up] :
         {std::tuple{"button_timestamp", "button_down", "button_up"},
          std::tuple{"play_asset_timestamp", "button_down_play_asset", "button_up_play_asset"},
          std::tuple{"play_asset_latency", "button_down_to_play_asset", "button_up_to_play_asset"}}) {
      if (!stats.contains(array) || stats[array].size() < 2 * click + 2) continue;
      one[down] = stats[array][2 * click];
      one[up] = stats[array][2 * click + 1];
    }
    clicks.push_back(std::move(one));
  }
  return clicks;
}

json statistics_json(const std::optional<stats_block>& stats) {
  if (!stats) return nullptr;
  json object{{"line", stats->line}, {"printed", stats->printed}};
  if (!stats->printed) return object;
  json fields = fields_json(layouts::stats_fields(stats->record));
  object["clicks"] = clicks_json(fields);
  object.update(fields);
  return object;
}

json state_dumps_json(const std::vector<state_dump>& dumps) {
  json list = json::array();
  for (const state_dump& dump : dumps) {
    json object{{"request", request_name(dump.about)}, {"line", dump.line}};
    if (!dump.record) {
      object["fields"] = nullptr;
    } else if (dump.about == request::lyn_state || dump.about == request::btmspk_state) {
      object["fields"] = fields_json(layouts::power_state_fields(*dump.record));
    } else {
      object["fields"] = fields_json(layouts::counts_fields(*dump.record));
    }
    list.push_back(std::move(object));
  }
  return list;
}

struct category_span {
  std::uint64_t records = 0;
  std::uint64_t first = 0, last = 0;
};

json profile_json(const harvest_model& harvest) {
  std::map<std::uint32_t, category_span> categories;
  for (const profile_entry& entry : harvest.profile) {
    const zol::profile_record record(entry.bytes.data());
    category_span& span = categories[record.category_id()];
    if (span.records++ == 0) span.first = record.timestamp();
    span.last = record.timestamp();
  }
  json by_category = json::array();
  for (const auto& [id, span] : categories) {
    by_category.push_back({{"category", std::string(zol::lookup_name(zol::category_names, id).view())},
                           {"id", id},
                           {"records", span.records},
                           {"first_timestamp", span.first},
                           {"last_timestamp", span.last}});
  }
  json profile{{"records", harvest.profile.size()}};
  profile["first_line"] = harvest.profile.empty() ? json(nullptr) : json(harvest.profile.front().line);
  profile["last_line"] = harvest.profile.empty() ? json(nullptr) : json(harvest.profile.back().line);
  // Which reader printed a line shows only where a failure line parts them.
  bool parted = false;
  for (const failure_line& failure : harvest.failures)
    parted = parted || failure.about == request::profile_events || failure.about == request::profiler_log;
  const std::size_t events = harvest.events_end.value_or(harvest.profile.size());
  profile["by_source"] = parted ? json{{"profile", events}, {"ZOL_profile", harvest.profile.size() - events}}
                                : json(nullptr);
  profile["by_category"] = std::move(by_category);
  return profile;
}

json assets_json(const std::optional<assets_block>& assets) {
  if (!assets) return nullptr;
  json object{{"line", assets->line}, {"length", assets->length}};
  object["entries"] = assets->length == 0 ? json::array() : entries_json(layouts::assets_fields(assets->table));
  return object;
}

json hid_json(const std::vector<hid_report>& reports) {
  json list = json::array();
  for (const hid_report& report : reports)
    list.push_back({{"id", hex_text(report.id)},
                    {"line", report.line},
                    {"failed", report.failed},
                    {"length", report.bytes.size()},
                    {"hex", hex_bytes(report.bytes)}});
  return list;
}

json failures_json(const std::vector<failure_line>& failures) {
  json list = json::array();
  for (const failure_line& failure : failures) {
    json object{{"line", failure.line},
                {"module", failure.module},
                {"check", failure.check},
                {"source", failure.source},
                {"source_line", failure.source_line},
                {"value", failure.value == 0 ? json(nullptr) : json(hex_text(failure.value))},
                {"error_text", failure.value == 0 ? json(nullptr) : json(failure.error_text)},
                {"request", request_label(failure)},
                {"kind", kind_key(failure.kind)},
                {"meaning", failure_meaning(failure)},
                {"text", failure.text}};
    if (failure.about == request::hid_report) object["report_id"] = hex_text(failure.report_id);
    list.push_back(std::move(object));
  }
  return list;
}

}  // namespace

std::string_view request_name(request about) {
  switch (about) {
    case request::stats: return "zol-button 0xd7";
    case request::lyn_state: return "lyn 0xd0";
    case request::btmspk_state: return "btmspk 0xd0";
    case request::button_counts: return "zol-button 0xd0";
    case request::button_enables: return "zol-button 0xd1";
    case request::profile_events: return "profile 0xd1";
    case request::profiler_log: return "ZOL_profile selector 9";
    case request::assets: return "zol-button 0xd8";
    case request::hid_device: return "HID device";
    case request::hid_report: return "HID feature report";
  }
  return "";
}

std::string write_report(const capture_model& model, const std::string& capture_name) {
  json harvests = json::array();
  for (const harvest_model& harvest : model.harvests) {
    harvests.push_back({{"line", harvest.line},
                        {"statistics", statistics_json(harvest.stats)},
                        {"state_dumps", state_dumps_json(harvest.states)},
                        {"profile", profile_json(harvest)},
                        {"assets", assets_json(harvest.assets)},
                        {"hid_reports", hid_json(harvest.hid)},
                        {"failures", failures_json(harvest.failures)}});
  }
  json report{{"capture", capture_name == "-" ? "standard input" : capture_name},
              {"standard_error", model.has_stderr}};
  report["timesync"] = model.timesync ? json{{"tmx", model.timesync->tmx}, {"calendar", model.timesync->calendar}}
                                      : json(nullptr);
  report["harvests"] = std::move(harvests);
  return report.dump(2) + "\n";
}

}  // namespace inspect
