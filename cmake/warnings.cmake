# Warnings are errors everywhere; the sanitizer configuration stops at the
# first finding instead of carrying on.
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wformat=2 -Wundef
  -Wmissing-declarations -Werror)

if(KELVRA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
