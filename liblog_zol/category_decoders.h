#pragma once

// The decoders of the categories that have one of their own.

#include <cstdint>

#include "liblog_zol/profile_decoder.h"

namespace zol {

class execution_decoder final : public profile_decoder {
 public:
  name_text component_name(std::uint32_t component) const override;
  name_text event_name(std::uint32_t component, std::uint32_t event) const override;
};

class trace_decoder final : public profile_decoder {
 public:
  name_text component_name(std::uint32_t component) const override;
};

class sensor_decoder final : public profile_decoder {
 public:
  name_text component_name(std::uint32_t component) const override;
  name_text event_name(std::uint32_t component, std::uint32_t event) const override;
};

class orbix_decoder final : public profile_decoder {
 public:
  name_text component_name(std::uint32_t component) const override;
  name_text event_name(std::uint32_t component, std::uint32_t event) const override;
};

class nimbrel_decoder final : public profile_decoder {
 public:
  name_text component_name(std::uint32_t component) const override;
  name_text event_name(std::uint32_t component, std::uint32_t event) const override;
  void write_payload(record_printer& printer, const profile_record& record) const override;
};

class interrupt_decoder final : public profile_decoder {
 public:
  name_text component_name(std::uint32_t component) const override;
  name_text event_name(std::uint32_t component, std::uint32_t event) const override;
};

class uart_decoder final : public profile_decoder {
 public:
  name_text component_name(std::uint32_t component) const override;
  name_text event_name(std::uint32_t component, std::uint32_t event) const override;
};

class pkey_decoder final : public profile_decoder {
 public:
  name_text component_name(std::uint32_t component) const override;
  name_text event_name(std::uint32_t component, std::uint32_t event) const override;
  void write_payload(record_printer& printer, const profile_record& record) const override;

 private:
  name_text trace_point_name(std::uint32_t component, std::uint32_t trace) const;
};

}  // namespace zol
