# Writes OUTPUT, a C++ source that holds the bytes of INPUT (cmake -P).
file(READ "${INPUT}" digits HEX)
string(LENGTH "${digits}" digit_count)
math(EXPR size "${digit_count} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${digits}")
string(REGEX REPLACE "((0x[0-9a-f][0-9a-f],)(0x[0-9a-f][0-9a-f],)(0x[0-9a-f][0-9a-f],)(0x[0-9a-f][0-9a-f],)(0x[0-9a-f][0-9a-f],)(0x[0-9a-f][0-9a-f],)(0x[0-9a-f][0-9a-f],)(0x[0-9a-f][0-9a-f],))"
       "\\1\n" bytes "${bytes}")
file(WRITE "${OUTPUT}.new"
"// Built from the default phone by embed_description.cmake.
#include \"description.h\"
#include \"embedded_default.h\"

namespace tmxsim {
namespace {

// The parser may read the padding; it also makes an empty file a valid array.
const unsigned char bytes[${size} + description_padding] = {
${bytes}};

}  // namespace

std::string_view embedded_default_description() {
  return {reinterpret_cast<const char*>(bytes), ${size}};
}

}  // namespace tmxsim
")
file(COPY_FILE "${OUTPUT}.new" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.new")
