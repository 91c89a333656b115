#include "inspect/outputs/json_tree.h"

#include <algorithm>
#include <cstring>

#include "liblog_zol/digit_tables.h"

namespace inspect {
namespace {

void write_hex(json_writer& out, const nlohmann::ordered_json::binary_t& bytes) {
  const std::size_t group =
      bytes.has_subtype() && bytes.subtype() != 0 ? bytes.subtype() : bytes.size() + 1;
  std::string text(bytes.size() * 2 + (bytes.empty() ? 0 : (bytes.size() - 1) / group) + 2, '"');
  char* at = text.data() + 1;
  for (std::size_t first = 0; first < bytes.size(); first += group) {
    if (first != 0) *at++ = ' ';
    for (std::size_t i = first; i < std::min(bytes.size(), first + group); ++i, at += 2)
      std::memcpy(at, &zol::hex_pairs[2 * std::size_t{bytes[i]}], 2);
  }
  out.raw(text);
}

}  // namespace

void write_json_tree(json_writer& out, const nlohmann::ordered_json& value) {
  using type = nlohmann::ordered_json::value_t;
  switch (value.type()) {
    case type::object:
      out.begin_object();
      for (const auto& [key, item] : value.items()) {
        out.key(key);
        write_json_tree(out, item);
      }
      out.end_object();
      break;
    case type::array:
      out.begin_array();
      for (const nlohmann::ordered_json& item : value) write_json_tree(out, item);
      out.end_array();
      break;
    case type::string: out.value(value.get_ref<const std::string&>()); break;
    case type::boolean: out.value(value.get<bool>()); break;
    case type::number_unsigned: out.value(value.get<std::uint64_t>()); break;
    case type::number_integer: out.value(value.get<std::int64_t>()); break;
    case type::number_float: out.number(value.get<double>()); break;
    case type::binary: write_hex(out, value.get_binary()); break;
    default: out.null(); break;
  }
}

}  // namespace inspect
