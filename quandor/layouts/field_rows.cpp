#include "quandor/layouts/field_rows.h"

#include <charconv>
#include <cstring>
#include <limits>
#include <ostream>
#include <system_error>
#include <utility>

#include "liblog_zol/general_notation.h"

namespace layouts {
namespace {

enum class value_fault : std::uint8_t { shape, range, unprintable };

constexpr std::uint64_t word_max = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t signed_min = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t signed_max = std::numeric_limits<std::int32_t>::max();

// Bytes a form stores; fixed text and the derived difference store none.
std::size_t stored_width(value_form form) {
  switch (form) {
    case value_form::text:
    case value_form::u32_less:
      return 0;
    case value_form::flag:
      return 1;
    case value_form::u64:
    case value_form::u64_after:
      return 8;
    default:
      return 4;
  }
}

std::uint64_t field_bits(const field_row& row, const byte_reader& record, std::size_t start) {
  switch (row.form) {
    case value_form::text:
      return 0;
    case value_form::flag:
      return record.u8(start + row.offset);
    case value_form::u64:
    case value_form::u64_after:
      return record.u64(start + row.offset);
    default:
      return record.u32(start + row.offset);
  }
}

std::uint64_t base_bits(const field_row& row, const byte_reader& record, std::size_t start) {
  if (row.form == value_form::u64_after) return record.u64(start + row.base);
  if (row.form == value_form::u32_less) return record.u32(start + row.base);
  return 0;
}

// A value's text as the stream writes it with its default flags (decimal,
// six significant digits, hex two wide): made here, without the stream's
// cost, for the print and for the parse that holds a text against it.
constexpr std::size_t value_room = 32;

std::size_t value_text(value_form form, std::uint64_t bits, std::uint64_t base,
                       char (&out)[value_room]) {
  const auto word = static_cast<std::uint32_t>(bits);
  const auto signed_word = static_cast<std::int32_t>(word);
  const auto decimal = [&](auto value) {
    return static_cast<std::size_t>(std::to_chars(out, out + value_room, value).ptr - out);
  };
  switch (form) {
    case value_form::text:
      return 0;
    case value_form::u32:
      return decimal(word);
    case value_form::i32:
      return decimal(signed_word);
    case value_form::u64:
      return decimal(bits);
    case value_form::flag:
      return decimal(bits != 0 ? 1 : 0);
    case value_form::count_above_bit0:
      return decimal(word >> 1);
    case value_form::u64_after:
      return decimal(bits - base);
    case value_form::u32_less:
      return decimal(static_cast<std::uint32_t>(word - static_cast<std::uint32_t>(base)));
    case value_form::scan_ticks:
      return zol::write_general(word * seconds_per_scan_tick, out);
    case value_form::fixed_single:
      return zol::write_general(static_cast<float>(signed_word) * fixed_point_scale, out);
    case value_form::fixed_double:
      return zol::write_general(static_cast<double>(signed_word) * fixed_point_scale, out);
    case value_form::hex_u32: {
      // Two wide, right-aligned with a space.
      const auto size = static_cast<std::size_t>(
          std::to_chars(out + 1, out + value_room, word, 16).ptr - (out + 1));
      if (size >= 2) {
        std::memmove(out, out + 1, size);
        return size;
      }
      out[0] = ' ';
      return 2;
    }
  }
  return 0;
}

void write_value(std::ostream& out, value_form form, std::uint64_t bits, std::uint64_t base) {
  char text[value_room];
  out << std::string_view(text, value_text(form, bits, base, text));
}

void write_field(std::ostream& out, const field_row& row, const byte_reader& record,
                 std::size_t start) {
  write_value(out, row.form, field_bits(row, record, start), base_bits(row, record, start));
}

field_value report_value(value_form form, std::uint64_t bits, std::uint64_t base) {
  const auto word = static_cast<std::uint32_t>(bits);
  const auto signed_word = static_cast<std::int32_t>(word);
  switch (form) {
    case value_form::i32:
      return std::int64_t{signed_word};
    case value_form::flag:
      return std::uint64_t{bits != 0};
    case value_form::count_above_bit0:
      return std::uint64_t{word >> 1};
    case value_form::u64_after:
      return bits - base;
    case value_form::u32_less:
      return std::uint64_t{static_cast<std::uint32_t>(word - static_cast<std::uint32_t>(base))};
    case value_form::scan_ticks:
      return word * seconds_per_scan_tick;
    case value_form::fixed_single:
      return static_cast<float>(signed_word) * fixed_point_scale;
    case value_form::fixed_double:
      return static_cast<double>(signed_word) * fixed_point_scale;
    default:
      return bits;
  }
}

field_value raw_value(value_form form, std::uint64_t bits) {
  if (form == value_form::fixed_single || form == value_form::fixed_double)
    return std::int64_t{static_cast<std::int32_t>(static_cast<std::uint32_t>(bits))};
  return bits;
}

// Unaligned and little-endian, as byte_reader reads it; a field outside the
// record is dropped.
void store(std::span<std::uint8_t> record, std::size_t at, std::uint64_t bits,
           std::size_t width) {
  if (at > record.size() || width > record.size() - at) return;
  std::memcpy(record.data() + at, &bits, width);
}

template <class T>
std::optional<T> whole_number(std::string_view text, value_fault& fault, int base = 10) {
  T value{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base);
  if (error == std::errc::invalid_argument || stop != end) {
    fault = value_fault::shape;
    return std::nullopt;
  }
  if (error != std::errc{}) {
    fault = value_fault::range;
    return std::nullopt;
  }
  return value;
}

std::optional<std::uint64_t> word_number(std::string_view text, std::uint64_t highest,
                                         value_fault& fault, int base = 10) {
  const auto value = whole_number<std::uint64_t>(text, fault, base);
  if (value && *value > highest) {
    fault = value_fault::range;
    return std::nullopt;
  }
  return value;
}

// [-]digits[.digits][e[+|-]digits], the shapes of the default float format.
// Close enough to pick candidates; the print decides.
std::optional<double> decimal_fraction(std::string_view text) {
  // Six significant digits never print this long; it also bounds the exponent.
  if (text.size() > 32) return std::nullopt;
  std::size_t at = 0;
  const auto is_digit = [&] { return at < text.size() && text[at] >= '0' && text[at] <= '9'; };
  const bool negative = at < text.size() && text[at] == '-';
  if (negative) ++at;
  std::uint64_t mantissa = 0;
  int exponent = 0;
  std::size_t digits = 0;
  const auto take_digit = [&](int dropped, int kept) {
    if (mantissa < std::numeric_limits<std::uint64_t>::max() / 10 - 9) {
      mantissa = mantissa * 10 + static_cast<std::uint64_t>(text[at] - '0');
      exponent += kept;
    } else {
      exponent += dropped;
    }
    ++digits;
    ++at;
  };
  while (is_digit()) take_digit(1, 0);
  if (at < text.size() && text[at] == '.') {
    ++at;
    while (is_digit()) take_digit(0, -1);
  }
  if (digits == 0) return std::nullopt;
  if (at < text.size() && text[at] == 'e') {
    ++at;
    const bool below = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    if (!is_digit()) return std::nullopt;
    int power = 0;
    while (is_digit()) {
      if (power < 1000) power = power * 10 + (text[at] - '0');
      ++at;
    }
    exponent += below ? -power : power;
  }
  if (at != text.size()) return std::nullopt;
  double value = static_cast<double>(mantissa);
  for (; exponent > 0 && value != 0; --exponent) value *= 10;
  for (; exponent < 0 && value != 0; ++exponent) value /= 10;
  return negative ? -value : value;
}

// The stored word nearest `estimate`, or a neighbour, that prints `text`.
std::optional<std::uint64_t> word_printing(value_form form, std::string_view text,
                                           double estimate, std::int64_t lowest,
                                           std::int64_t highest, value_fault& fault) {
  // Also false for a NaN.
  if (!(estimate >= static_cast<double>(lowest) - 1 &&
        estimate <= static_cast<double>(highest) + 1)) {
    fault = value_fault::range;
    return std::nullopt;
  }
  const auto nearest = static_cast<std::int64_t>(estimate < 0 ? estimate - 0.5 : estimate + 0.5);
  for (const std::int64_t step : {0, -1, 1}) {
    const std::int64_t candidate = nearest + step;
    if (candidate < lowest || candidate > highest) continue;
    const std::uint64_t bits = static_cast<std::uint64_t>(candidate) & word_max;
    char shown[value_room];
    if (std::string_view(shown, value_text(form, bits, 0, shown)) == text) return bits;
  }
  fault = value_fault::unprintable;
  return std::nullopt;
}

// The bits to store for `text`; for a difference, the difference shown.
std::optional<std::uint64_t> read_value(value_form form, std::string_view text,
                                        value_fault& fault) {
  fault = value_fault::shape;
  switch (form) {
    case value_form::text:
      return std::nullopt;
    case value_form::u32:
    case value_form::u32_less:
      return word_number(text, word_max, fault);
    case value_form::count_above_bit0: {
      const auto count = word_number(text, word_max >> 1, fault);
      if (!count) return std::nullopt;
      return *count << 1;
    }
    case value_form::u64:
    case value_form::u64_after:
      return whole_number<std::uint64_t>(text, fault);
    case value_form::i32: {
      const auto value = whole_number<std::int64_t>(text, fault);
      if (!value) return std::nullopt;
      if (*value < signed_min || *value > signed_max) {
        fault = value_fault::range;
        return std::nullopt;
      }
      return static_cast<std::uint64_t>(*value) & word_max;
    }
    case value_form::flag:
      if (text == "0" || text == "1") return std::uint64_t{text == "1"};
      return std::nullopt;
    case value_form::hex_u32:
      while (text.starts_with(' ')) text.remove_prefix(1);
      return word_number(text, word_max, fault, 16);
    case value_form::scan_ticks: {
      const auto seconds = decimal_fraction(text);
      if (!seconds) return std::nullopt;
      return word_printing(form, text, *seconds / seconds_per_scan_tick, 0,
                           static_cast<std::int64_t>(word_max), fault);
    }
    case value_form::fixed_single:
    case value_form::fixed_double: {
      const auto value = decimal_fraction(text);
      if (!value) return std::nullopt;
      return word_printing(form, text, *value / fixed_point_scale, signed_min, signed_max,
                           fault);
    }
  }
  return std::nullopt;
}

std::string fault_words(const field_row& row, value_fault fault) {
  if (fault == value_fault::range) return "does not fit its field";
  if (fault == value_fault::unprintable) return "has no field value that prints so";
  std::string words;
  switch (row.form) {
    case value_form::i32:
      words = "wants a signed decimal number";
      break;
    case value_form::flag:
      words = "wants 0 or 1";
      break;
    case value_form::hex_u32:
      words = "wants a hexadecimal number";
      break;
    case value_form::scan_ticks:
    case value_form::fixed_single:
    case value_form::fixed_double:
      words = "wants a decimal fraction";
      break;
    default:
      words = "wants a decimal number";
      break;
  }
  if (row.unit == " us") words += " of microseconds";
  if (row.unit == " sec") words += " of seconds";
  return words;
}

std::string quoted(std::string_view text) {
  std::string out = "'";
  out += text;
  out += '\'';
  return out;
}

}  // namespace

std::string padded_label(std::string_view caption, std::size_t width, std::string_view tail) {
  std::string label(caption);
  if (label.size() < width) label.append(width - label.size(), ' ');
  label += tail;
  return label;
}

void write_rows(std::ostream& out, const line_layout& layout, const byte_reader& record) {
  for (const field_row& row : layout.rows) {
    if (row.form == value_form::text) {
      out << row.caption << std::endl;
      continue;
    }
    out << padded_label(row.caption, layout.label_width, layout.tail);
    write_field(out, row, record, 0);
    out << row.unit << std::endl;
  }
}

bool parse_rows(const line_layout& layout, std::span<const std::string_view> lines,
                std::size_t first, std::span<std::uint8_t> record, parse_fault& fault) {
  const std::string what(layout.what);
  std::size_t at = 0;
  const auto refuse = [&](std::string message) {
    fault = {first + at, std::move(message)};
    return false;
  };
  // A difference is stored once the field it is taken from is.
  std::vector<std::pair<const field_row*, std::uint64_t>> differences;
  for (const field_row& row : layout.rows) {
    if (row.form == value_form::text) {
      std::string_view rest = row.caption;
      for (bool more = true; more; ++at) {
        const std::size_t end = rest.find('\n');
        const std::string_view part = rest.substr(0, end);
        if (at >= lines.size()) return refuse(what + " ends early");
        if (lines[at] != part)
          return refuse(part.empty() ? what + " wants an empty line"
                                     : what + " wants the line " + quoted(part));
        more = end != std::string_view::npos;
        if (more) rest.remove_prefix(end + 1);
      }
      continue;
    }
    if (at >= lines.size()) return refuse(what + " ends early");
    const std::string label = padded_label(row.caption, layout.label_width, layout.tail);
    std::string_view text = lines[at];
    if (!text.starts_with(label)) return refuse(what + " wants the label " + quoted(row.caption));
    text.remove_prefix(label.size());
    value_fault problem = value_fault::shape;
    std::optional<std::uint64_t> value;
    if (text.ends_with(row.unit)) {
      text.remove_suffix(row.unit.size());
      value = read_value(row.form, text, problem);
    }
    if (!value)
      return refuse(what + " line " + quoted(row.caption) + " " + fault_words(row, problem));
    if (row.form == value_form::u64_after)
      differences.emplace_back(&row, *value);
    else
      store(record, row.offset, *value, stored_width(row.form));
    ++at;
  }
  for (const auto& [row, difference] : differences) {
    const std::uint64_t base = byte_reader(record).u64(row->base);
    store(record, row->offset, difference + base, stored_width(row->form));
  }
  return true;
}

void write_entry(std::ostream& out, std::span<const field_row> rows, const byte_reader& record,
                 std::size_t start) {
  for (const field_row& row : rows) {
    out << row.caption;
    write_field(out, row, record, start);
    out << row.unit;
  }
}

bool parse_entry(std::string_view what, std::span<const field_row> rows, std::string_view text,
                 std::span<std::uint8_t> record, std::size_t start, std::string& message) {
  const auto missing = [&](const field_row& row) {
    message = std::string(what) + " field " + quoted(row.name) + " is missing";
    return false;
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const field_row& row = rows[i];
    if (!text.starts_with(row.caption)) return missing(row);
    text.remove_prefix(row.caption.size());
    // A value runs up to the next field's caption.
    std::size_t end = text.size();
    if (i + 1 < rows.size()) {
      end = text.find(rows[i + 1].caption);
      if (end == std::string_view::npos) return missing(rows[i + 1]);
    }
    const std::string_view value_text = text.substr(0, end);
    text.remove_prefix(end);
    value_fault problem = value_fault::shape;
    const auto value = read_value(row.form, value_text, problem);
    if (!value) {
      message = std::string(what) + " field " + quoted(row.name) + " " + fault_words(row, problem);
      return false;
    }
    store(record, start + row.offset, *value, stored_width(row.form));
  }
  return true;
}

void add_fields(std::span<const field_row> rows, const byte_reader& record, std::size_t start,
                std::optional<std::size_t> entry, std::vector<named_field>& fields) {
  for (const field_row& row : rows) {
    if (row.form == value_form::text) continue;
    const std::uint64_t bits = field_bits(row, record, start);
    const std::optional<std::size_t> index = entry ? entry : row.index;
    const field_value value = report_value(row.form, bits, base_bits(row, record, start));
    fields.push_back({row.name, value, index, row.role});
    if (!row.raw_name.empty()) fields.push_back({row.raw_name, raw_value(row.form, bits), index});
  }
}

std::string_view caption_at(std::span<const field_row> rows, std::size_t line) {
  for (const field_row& row : rows) {
    const std::size_t count = line_count(std::span(&row, 1));
    if (line < count) return row.caption;
    line -= count;
  }
  return {};
}

std::optional<std::size_t> first_difference(std::span<const std::string_view> lines,
                                            std::string_view printed) {
  std::size_t at = 0;
  for (; !printed.empty(); ++at) {
    const std::size_t end = printed.find('\n');
    if (at >= lines.size() || lines[at] != printed.substr(0, end)) return at;
    printed.remove_prefix(end == std::string_view::npos ? printed.size() : end + 1);
  }
  if (at != lines.size()) return at;
  return std::nullopt;
}

bool prints_back(const line_layout& layout, std::span<const std::string_view> lines,
                 std::size_t first, std::string_view printed, parse_fault& fault) {
  const auto at = first_difference(lines, printed);
  if (!at) return true;
  const std::string_view caption =
      *at < first ? lines[*at] : caption_at(layout.rows, *at - first);
  fault = {*at, std::string(layout.what) + " line " + quoted(caption) +
                    " does not print back the same"};
  return false;
}

bool has_lines(std::string_view what, std::span<const std::string_view> lines, std::size_t count,
               parse_fault& fault) {
  if (lines.size() < count) {
    fault = {lines.size(), std::string(what) + " ends after " + std::to_string(lines.size()) +
                               " of its " + std::to_string(count) + " lines"};
    return false;
  }
  if (lines.size() > count) {
    fault = {count, std::string(what) + " has lines past its end"};
    return false;
  }
  return true;
}

std::optional<std::string_view> framed(std::string_view line, std::string_view prefix,
                                       std::string_view suffix) {
  if (line.size() < prefix.size() + suffix.size() || !line.starts_with(prefix) ||
      !line.ends_with(suffix))
    return std::nullopt;
  return line.substr(prefix.size(), line.size() - prefix.size() - suffix.size());
}

}  // namespace layouts
