#include "cf_describe.h"

#include <charconv>

#include "printable_text.h"

namespace tmxsim {
namespace {

// Contents nested deeper are shown as "...".
constexpr int max_shown_depth = 8;

std::string number_text(const cf_value& number) {
  char digits[32];
  const auto [end, error] =
      number.is_float ? std::to_chars(digits, digits + sizeof digits, number.real)
                      : std::to_chars(digits, digits + sizeof digits, number.integer);
  return error == std::errc() ? std::string(digits, end) : std::string("?");
}

void append_contents(cf_store& store, const void* ref, int depth, std::string& out) {
  cf_value* value = store.find(ref);
  if (ref == nullptr || value == nullptr || value->kind == cf_kind::hid_device) {
    out += cf_name(store, ref);
    return;
  }
  if (depth > max_shown_depth) {
    out += "...";
    return;
  }
  switch (value->kind) {
    case cf_kind::boolean:
      out += value->boolean ? "true" : "false";
      return;
    case cf_kind::number:
      out += number_text(*value);
      return;
    case cf_kind::string:
      out += quoted(value->text);
      return;
    case cf_kind::array: {
      out += '[';
      const char* separator = "";
      for (const void* item : value->items) {
        out += separator;
        append_contents(store, item, depth + 1, out);
        separator = ", ";
      }
      out += ']';
      return;
    }
    case cf_kind::dictionary: {
      out += '{';
      const char* separator = "";
      for (const auto& [key, item] : value->entries) {
        out += separator;
        append_contents(store, key, depth + 1, out);
        out += " = ";
        append_contents(store, item, depth + 1, out);
        separator = ", ";
      }
      out += '}';
      return;
    }
    case cf_kind::hid_device:
      return;
  }
}

}  // namespace

std::string cf_name(cf_store& store, const void* ref) {
  if (ref == nullptr) return "NULL";
  const cf_value* value = store.find(ref);
  if (value == nullptr) return "unknown";
  if (value->kind == cf_kind::boolean) return value->boolean ? "true" : "false";
  if (value->constant) return quoted(value->text);
  return "cf#" + std::to_string(value->serial);
}

std::string cf_contents(cf_store& store, const void* ref) {
  std::string out;
  append_contents(store, ref, 0, out);
  return out;
}

}  // namespace tmxsim
