#pragma once

// The id-to-name tables of the profile records. Each table is a constant
// array of rows in ascending id order; ids need not be contiguous, and an id
// that no row carries is printed as its decimal digits.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zol {

struct id_name {
  std::uint32_t id;
  std::string_view name;
};

// A looked-up name: either a table's own text or the decimal digits of an id
// that no row carries; either way printable ASCII without a quote or a
// backslash (the tables are checked as they are built). Holds no pointer into
// itself, so it copies freely.
class name_text {
 public:
  constexpr explicit name_text(std::string_view table_name) noexcept
      : name_(table_name.data()), size_(table_name.size()) {}
  explicit name_text(std::uint32_t id) noexcept;

  std::string_view view() const noexcept {
    return {name_ ? name_ : digits_, size_};
  }
  friend bool operator==(const name_text& text, std::string_view other) noexcept {
    return text.view() == other;
  }

 private:
  const char* name_ = nullptr;
  std::size_t size_ = 0;
  char digits_[10] = {};
};

// The first row whose id is `id`; otherwise `id` in unsigned decimal.
name_text lookup_name(std::span<const id_name> table, std::uint32_t id) noexcept;

// The ids that code beyond the name tables names: the button controller's
// category, its latency component and record types, and the checkpoints the
// statistics record keeps times for.
inline constexpr std::uint32_t nimbrel_category = 4;
inline constexpr std::uint32_t pkey_category = 7;
inline constexpr std::uint32_t pkey_latency_component = 3;
inline constexpr std::uint32_t pkey_event_type = 2;
inline constexpr std::uint32_t pkey_trace_point_type = 3;
inline constexpr std::uint32_t pkey_context_type = 10;
enum pkey_checkpoint : std::uint32_t {
  ckp_finger_on = 0,
  ckp_finger_off = 1,
  ckp_button_down = 2,
  ckp_button_up = 3,
  ckp_start_haptics = 5,
  ckp_play_asset = 7,
};

inline constexpr id_name category_names[] = {
    {0, "execution"}, {1, "trace"}, {2, "sensors"}, {3, "orbix"}, {4, "nimbrel"},
    {5, "interrupt"}, {6, "uart"},  {7, "pkey"},    {8, "control"},
};

inline constexpr id_name execution_components[] = {
    {0, "scheduler"}, {1, "function"}, {2, "workloop"}, {3, "command"}, {4, "extfunction"},
};

inline constexpr id_name workloop_events[] = {
    {0, "action"}, {1, "signal"},
};

inline constexpr id_name trace_components[] = {
    {0, "remoteq"}, {1, "endpoint"},
};

inline constexpr id_name sensor_components[] = {
    {0, "accel"}, {1, "gyro"}, {2, "compass"}, {3, "pressure"},
    {4, "nebium"}, {5, "als"}, {6, "temperature"},
};

inline constexpr id_name sensor_events[] = {
    {0, "latency"},       {1, "rawdata"},         {2, "data"},
    {3, "filtdata"},      {4, "apdata"},          {5, "regwrite"},
    {6, "regread"},       {7, "update"},          {8, "filter-state"},
    {9, "sensor-info"},   {10, "annotation"},     {16, "trigger-magnitude"},
    {17, "trigger-latency"},
};

inline constexpr id_name orbix_components[] = {
    {0, "orbix"},
};

inline constexpr id_name orbix_events[] = {
    {0, "latency"}, {1, "monitor"}, {17, "trigger-latency"},
};

inline constexpr id_name nimbrel_components[] = {
    {0, "nimbrel"},
};

inline constexpr id_name nimbrel_events[] = {
    {0, "data-in"}, {1, "data-out"},
};

inline constexpr id_name interrupt_components[] = {
    {0, "gpio"},
};

inline constexpr id_name interrupt_events[] = {
    {0, "latency"},
};

inline constexpr id_name uart_components[] = {
    {0, "uart0"}, {1, "uart1"}, {2, "uart2"},
};

inline constexpr id_name uart_events[] = {
    {0, "action"}, {1, "data"}, {2, "rawdata"},
};

inline constexpr id_name pkey_components[] = {
    {0, "pkey"}, {1, "pellam"}, {2, "amp"}, {3, "latency"}, {4, "vexa"},
};

// The event names of the pkey "latency" component.
inline constexpr id_name pkey_latency_checkpoints[] = {
    {0, "ckp_PKEYFingerON"},   {1, "ckp_PKEYFingerOFF"},
    {2, "ckp_PKEYButtonDown"}, {3, "ckp_PKEYButtonUp"},
    {4, "ckp_LYNTurnOn"},      {5, "ckp_PellamStartHaptics"},
    {6, "ckp_LYNReady"},       {7, "ckp_PellamPlayAsset"},
};

inline constexpr id_name pkey_events[] = {
    {0x00, "trace"},            {0x01, "context"},
    {0x02, "input-packet"},     {0x03, "status-event"},
    {0x10, "trigger-fingeron"}, {0x11, "trigger-fingeroff"},
    {0x12, "trigger-clickon"},  {0x13, "trigger-clickoff"},
};

// The button controller's trace points. Some names stand under two ids; each
// id keeps its own row.
inline constexpr id_name pkey_trace_points[] = {
    {0x00, "Notification"},
    {0x01, "Command"},
    {0x02, "SetProperty"},
    {0x03, "GetProperty"},
    {0x04, "SendAmpRequest"},
    {0x05, "AmpWorkerRequestComplete"},
    {0x06, "AmpRequestComplete"},
    {0x07, "EnablePkey"},
    {0x08, "OnNimbrelData"},
    {0x09, "SimulateEvent"},
    {0x0A, "AmpTurnOn"},
    {0x0B, "NotifyPellam"},
    {0x0C, "AmpTurnOff"},
    {0x0D, "EnableMclk"},
    {0x0E, "EnablePellam"},
    {0x0F, "VexaData"},
    {0x10, "DispatchReport"},
    {0x11, "HandleFingerDownChanged"},
    {0x12, "HandleButtonStateChanged"},
    {0x13, "HandleClickStatus"},
    {0x14, "ChangeOpMode"},
    {0x15, "ScanESAction"},
    {0x16, "GorvinTESAction"},
    {0x17, "NotifyPellamRunState"},
    {0x18, "SimulateButtonPress"},
    {0x19, "AmpRequestCompleteStep2"},
    {0x1A, "AmpRequestCompleteStep3"},
    {0x1B, "AmpRequestCompleteStep4"},
    {0x1C, "AmpRequestCompleteStep5"},
    {0x1D, "AmpRequestCompleteStep6"},
    {0x1E, "AmpPrewarmComplete"},
    {0x1F, "AmpEnableComplete"},
    {0x20, "AmpDisableComplete"},
    {0x21, "StartPellam"},
    {0x22, "StopPellam"},
    {0x23, "AssetTimerComplete"},
    {0x24, "PellamCLTimeOut"},
    {0x25, "PellamCLFault"},
    {0x26, "SetTestMode"},
    {0x27, "SimulateFingerdetect"},
    {0x28, "SimulateClick"},
    {0x64, "ResetBegin"},
    {0x65, "ResetEnd"},
    {0x66, "ResetComplete"},
    {0x67, "ResetRequest"},
    {0x68, "Fingerdetect"},
    {0x69, "EnableStuckFDTimer"},
    {0xC8, "SetState"},
    {0xC9, "ConfigureSpeaker"},
    {0xCA, "DisabledToPreWarm"},
    {0xCB, "DisabledToEnabled"},
    {0xCC, "PreWarmToEnabled"},
    {0xCD, "PreWarmToDisabled"},
    {0xCE, "EnabledToPreWarm"},
    {0xCF, "EnabledToDisabled"},
    {0xD0, "DisabledToIVEnabled"},
    {0xD1, "PreWarmToIVEnabled"},
    {0xD2, "EnabledToIVEnabled"},
    {0xD3, "IVEnabledToEnabled"},
    {0xD4, "AmpPowerDown"},
    {0xD5, "AmpClearInterrupts"},
    {0xD6, "SoftReset"},
    {0xD7, "AmpPowerUpPhase1"},
    {0xD8, "AmpPowerUpPhase2"},
    {0xD9, "AmpPowerUpPhase3"},
    {0xDA, "SetVolume"},
    {0xDB, "ConfigureTDMControls"},
    {0xDC, "SetChannelEnable"},
    {0xDD, "WaitForAmpPowerdown"},
    {0xDE, "EnableAmpReset"},
    {0xDF, "EnableGNDSwitches"},
    {0xE0, "AmpPowerUpPhase1"},
    {0xE1, "AmpPowerUpPhase2"},
    {0xE2, "AmpPowerUpPhase3"},
    {0xE3, "DisabledToPreWarm"},
    {0xE4, "DisabledToEnabled"},
    {0xE5, "PreWarmToEnabled"},
    {0xE6, "EnabledToPreWarm"},
    {0xE7, "DisabledToIVEnabled"},
    {0xE8, "PreWarmToIVEnabled"},
};

}  // namespace zol

namespace zol {

// Names of the record types, for the views that show them (the text line
// shows the id alone): what the payload holds by type id, and the two
// categories whose own writers read a type differently.
inline constexpr id_name payload_types[] = {
    {1, "packet-fragment"}, {2, "small-packet"},        {3, "arguments"},
    {4, "trigger"},         {5, "function-timing"},     {8, "client-configuration"},
    {9, "task-function"},   {11, "table-entry"},        {12, "dispatcher-configuration"},
};
inline constexpr id_name nimbrel_types[] = {{3, "sample"}};
inline constexpr id_name pkey_types[] = {{2, "event"}, {3, "trace-point"}, {10, "context"}};

// The type's name in its category, else the payload type's, else digits.
name_text type_name(std::uint32_t category, std::uint32_t type) noexcept;

}  // namespace zol
