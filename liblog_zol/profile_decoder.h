#pragma once

// The decoder family: one stateless class per record category, each with a
// single static instance. The base names components and events by number and
// hands out the generic payload; subclasses bring their own names and, for
// two categories, their own payload writer. Every item goes to a printer; the
// text printer makes the collector's line.

#include <cstdint>
#include <string>

#include "liblog_zol/clock_source.h"
#include "liblog_zol/name_tables.h"
#include "liblog_zol/profile_record.h"
#include "liblog_zol/record_printer.h"

namespace zol {

// No virtual destructor: the instances are static and never deleted through
// the base.
class profile_decoder {
 public:
  // The whole text line, without a newline.
  virtual std::string format(const profile_record& record, clock_source& clock) const final;
  virtual name_text category_name(std::uint32_t category) const final;
  virtual name_text component_name(std::uint32_t component) const;
  virtual name_text event_name(std::uint32_t component, std::uint32_t event) const;
  // Hands the payload items to the printer, in the line's order.
  virtual void write_payload(record_printer& printer, const profile_record& record) const;

  // The record, item by item, to any printer; the clock is read once.
  void decode(record_printer& printer, const profile_record& record, clock_source& clock) const;
};

// The decoder of a category id; the base decoder for ids without one.
const profile_decoder& decoder_for_category(std::uint32_t category) noexcept;

}  // namespace zol
