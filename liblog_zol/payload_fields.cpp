#include "liblog_zol/payload_fields.h"

namespace zol {

void each_field(record_printer& printer, const profile_record& record,
                std::span<const payload_field> fields) {
  for (const payload_field& field : fields)
    printer.field(field.key, field.width, payload_value(record, field));
}

}  // namespace zol
