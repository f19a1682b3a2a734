# split_debug(TARGET): moves the symbols to TARGET.exe.debug beside the exe, which stays small and refers to that file.
function(split_debug target)
  find_program(VISTREL_OBJCOPY NAMES x86_64-w64-mingw32-objcopy objcopy REQUIRED)
  add_custom_command(
    TARGET ${target}
    POST_BUILD
    COMMAND ${VISTREL_OBJCOPY} --preserve-dates --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
    COMMAND ${VISTREL_OBJCOPY} --preserve-dates --strip-all --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug $<TARGET_FILE:${target}>
    VERBATIM)
endfunction()
