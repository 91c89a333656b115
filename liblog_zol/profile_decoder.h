#pragma once

// The decoder family: one stateless class per record category, each with a
// single static instance. The base names components and events by number and
// writes the generic payload; subclasses bring their own names and, for two
// categories, their own payload writer.

#include <cstdint>
#include <string>

#include "liblog_zol/line_builder.h"
#include "liblog_zol/name_tables.h"
#include "liblog_zol/profile_record.h"

namespace zol {

// No virtual destructor: the instances are static and never deleted through
// the base.
class profile_decoder {
 public:
  // The whole line, without a newline.
  virtual std::string format(const profile_record& record) const final;
  virtual name_text category_name(std::uint32_t category) const final;
  virtual name_text component_name(std::uint32_t component) const;
  virtual name_text event_name(std::uint32_t component, std::uint32_t event) const;
  // Appends the payload items, each " 'key':value,".
  virtual void write_payload(line_builder& stream, const profile_record& record) const;
};

// The decoder of a category id; the base decoder for ids without one.
const profile_decoder& decoder_for_category(std::uint32_t category) noexcept;

}  // namespace zol
