#include "inspect/outputs/json_tree.h"

namespace inspect {

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
    default: out.null(); break;
  }
}

}  // namespace inspect
