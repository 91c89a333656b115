# The project's warning set, for every build. Warnings stop the build only
# where developers and CI ask for it (KELVRA_WERROR, on in the presets): a
# user's newer or older compiler may warn where ours do not.
add_compile_options(
  -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wformat=2 -Wundef
  -Wmissing-declarations)
if(KELVRA_WERROR)
  add_compile_options(-Werror)
endif()

# The sanitizer configuration stops at the first finding instead of carrying
# on. The flags are kept for what else is built against this build.
set(kelvra_sanitize_flags -fsanitize=address,undefined -fno-sanitize-recover=all)
if(KELVRA_SANITIZE)
  add_compile_options(${kelvra_sanitize_flags} -fno-omit-frame-pointer)
  add_link_options(${kelvra_sanitize_flags})
endif()
