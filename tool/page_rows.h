#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tool/bands.h"
#include "tool/picture.h"

namespace BP::tool {

/// The rows of the pages of a picture, one after the other. The rows of a wrapped page begin with some of its last ones
/// and end with some of its first ones, as windows with a circular pad read them:
///
///     e f | a b c d e f | a b
class PageRows {
 public:
  explicit PageRows(RowReader& rowReader) : reader(rowReader) {}
  /// Wrapped pages. The last rows are read beforehand, by `second`, a second reader of the same picture. Throws
  /// `std::runtime_error` if it has another header than the first one.
  PageRows(RowReader& rowReader, std::unique_ptr<RowReader> second, const Window& window);

  bool isWrapped() const { return ahead != nullptr; }
  /// The number of the first row of a page: 0, or that of the first one before it.
  std::int64_t first() const { return -above; }
  void beginPage();
  /// Reads the next rows of the page.
  void read(std::uint8_t* to, std::int64_t count);
  /// Ends the page, whose other rows are not needed.
  void endPage();

 private:
  using Rows = std::vector<std::uint8_t>;

  void readFromPage(std::uint8_t* to, std::int64_t count);
  std::int64_t height() const { return reader.header().height; }
  std::size_t rowBytes() const { return reader.header().rowBytes(); }

  RowReader& reader;
  std::unique_ptr<RowReader> ahead;
  std::int64_t above = 0;  ///< last rows before the first one
  std::int64_t below = 0;  ///< first rows after the last one
  Rows ends;               ///< the last rows, of `above`, and then the first ones, of `below`
  std::int64_t next = 0;   ///< row of the page
};

}  // namespace BP::tool
