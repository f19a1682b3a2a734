# The compiler options and headers that every target of the project shares.
option(VISTREL_COVERAGE "Count executed lines and branches" OFF)
option(VISTREL_FUZZ "Build the fuzz targets; needs clang" OFF)
set(VISTREL_SANITIZE "" CACHE STRING "Sanitizers for the native build, as -fsanitize= takes them")
set(VISTREL_DEPS ${CMAKE_SOURCE_DIR}/.deps CACHE PATH "Where the set-up keeps what it fetched")

# Debian and MSYS2 have the headers of utfcpp in a separate folder, which a cross-compiler does not search.
find_path(VISTREL_UTF8CPP utf8.h PATHS /usr/include PATH_SUFFIXES utf8cpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)

add_library(vistrel_options INTERFACE)
target_include_directories(vistrel_options INTERFACE ${CMAKE_SOURCE_DIR})
target_include_directories(
  vistrel_options SYSTEM INTERFACE ${VISTREL_DEPS}/include ${VISTREL_UTF8CPP})
target_compile_options(
  vistrel_options INTERFACE -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wno-sign-conversion
                            -Wnon-virtual-dtor -Wold-style-cast -Wformat=2 -Wno-format-zero-length)
# The exe must not contain paths of the build machine, except in a coverage build, which needs them.
if(NOT VISTREL_COVERAGE)
  target_compile_options(vistrel_options INTERFACE -ffile-prefix-map=${VISTREL_DEPS}=.deps
                                                   -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
endif()

if(WIN32)
  target_compile_definitions(
    vistrel_options
    INTERFACE UNICODE
              _UNICODE
              NOMINMAX
              WIN32_LEAN_AND_MEAN
              _WIN32_WINNT=0x0A00
              NTDDI_VERSION=0x0A000006
              # printf by IEEE rules from mingw's own library; msvcrt's differs in rounding.
              __USE_MINGW_ANSI_STDIO=1
              # The C interface of ONNX Runtime spells the calling convention with one underscore; clang knows that.
              $<$<CXX_COMPILER_ID:GNU>:_stdcall=__stdcall>)
  # Functions of Windows are converted to and from FARPROC, which GCC warns about.
  target_compile_options(vistrel_options INTERFACE -Wno-cast-function-type)
endif()

if(VISTREL_SANITIZE AND NOT WIN32)
  # Tests themselves are not checked for undefined behaviour, which saves a third of their compile time.
  string(REPLACE "," ";" sanitizers ${VISTREL_SANITIZE})
  foreach(sanitizer ${sanitizers})
    if(sanitizer STREQUAL undefined)
      # A number that its integer cannot hold is undefined too, though GCC does not count it.
      target_compile_options(
        vistrel_options
        INTERFACE $<$<NOT:$<BOOL:$<TARGET_PROPERTY:VISTREL_IS_TEST>>>:-fsanitize=undefined,float-cast-overflow>)
    else()
      target_compile_options(vistrel_options INTERFACE -fsanitize=${sanitizer})
    endif()
  endforeach()
  target_compile_options(vistrel_options INTERFACE -fno-sanitize-recover=all -fno-omit-frame-pointer)
  # The sanitizers see neither an empty optional that is read nor an index beyond a vector's size but within its memory.
  target_compile_definitions(vistrel_options INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(vistrel_options INTERFACE -fsanitize=${VISTREL_SANITIZE})
  if(VISTREL_SANITIZE MATCHES thread)
    # GCC warns that it does not follow fences; the exchange behind the one in question is followed.
    target_compile_options(vistrel_options INTERFACE -Wno-tsan)
  endif()
endif()

if(VISTREL_FUZZ)
  # Text is read through a small buffer, so that a short input reaches the code for its end.
  target_compile_definitions(vistrel_options INTERFACE VISTREL_TEXT_BUFFER_BYTES=256)
endif()

# instrument(TARGET): instruments the tool's own code for coverage, traps or fuzzing if the preset says so. Tests and the
# lab are built as usual.
function(instrument target)
  if(VISTREL_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-abs-path -O0)
    target_compile_definitions(${target} PRIVATE VISTREL_COUNTS_LINES=1)
    target_link_options(${target} PUBLIC --coverage)
  endif()
  if(VISTREL_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(VISTREL_SANITIZE AND WIN32)
    # mingw has no sanitizer library: undefined behaviour ends the program with an illegal instruction.
    target_compile_options(${target} PRIVATE -fsanitize=${VISTREL_SANITIZE} -fsanitize-undefined-trap-on-error)
  endif()
endfunction()
