#pragma once

#include <png.h>

#include <array>
#include <csetjmp>
#include <cstdio>
#include <exception>

/// How errors come out of libpng.
namespace BP::tool {

/// The reason for which libpng gave up.
struct PngError {
  std::array<char, 160> text{};
  std::exception_ptr thrown;  ///< what a callback would have thrown, had it been allowed to

  /// The handler of libpng; its pointer is a `PngError`.
  [[noreturn]] static void handle(png_structp png, png_const_charp text) {
    auto* error = static_cast<PngError*>(png_get_error_ptr(png));
    std::snprintf(error->text.data(), error->text.size(), "%s", text);
    png_longjmp(png, 1);
  }
  static void ignore(png_structp /*png*/, png_const_charp /*text*/) {}

  void rethrow() const {
    if (thrown) std::rethrow_exception(thrown);
  }
};

/// Runs `body`, which calls libpng; false if libpng gave up in it.
///
/// libpng leaves by longjmp, so nothing in `body` may have a destructor; the caller owns what it works on. This
/// function is the only frame that setjmp returns to, and nothing in it changes.
template <class Body>
bool pngSucceeds(png_structp png, const Body& body) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  body();
  return true;
}

}  // namespace BP::tool
