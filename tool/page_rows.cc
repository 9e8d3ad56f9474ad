#include "tool/page_rows.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace BP::tool {

namespace {

/// Reads rows that nobody needs.
void skip(RowReader& reader, std::int64_t count) {
  if (count <= 0) return;
  std::vector<std::uint8_t> unused(reader.header().rowBytes());
  for (; count > 0; --count) reader.read(unused.data(), 1);
}

}  // namespace

PageRows::PageRows(RowReader& rowReader, std::unique_ptr<RowReader> second, const Window& window)
    : reader(rowReader), ahead(std::move(second)) {
  const PictureHeader &header = reader.header(), &other = ahead->header();
  const bool isSame = header.width == other.width && header.height == other.height && header.pages == other.pages &&
                      header.channels == other.channels && header.type == other.type;
  if (!isSame) throw std::runtime_error("the input has changed while it was read");
  // Positions of windows lie up to this far beyond the ends.
  const Reach reach = reachOf(window);
  const std::int64_t outputs = outputExtent(header.height, window.height, window.mode);
  above = reach.above;
  below = outputs + reach.below - header.height;
  ends.resize(static_cast<std::size_t>(above + below) * rowBytes());
}

void PageRows::beginPage() {
  next = first();
  if (!isWrapped()) return;
  skip(*ahead, height() - above);
  ahead->read(ends.data(), above);
}

void PageRows::read(std::uint8_t* to, std::int64_t count) {
  const std::uint8_t* const heads = ends.data() + static_cast<std::size_t>(above) * rowBytes();
  while (count > 0) {
    const bool isInside = next >= 0 && next < height();
    const std::int64_t end = next < 0 ? 0 : isInside ? height() : height() + below;
    const std::int64_t part = std::min(count, end - next);
    const std::size_t bytes = static_cast<std::size_t>(part) * rowBytes();
    if (isInside) {
      readFromPage(to, part);
    } else if (next < 0) {
      std::memcpy(to, ends.data() + static_cast<std::size_t>(next + above) * rowBytes(), bytes);
    } else {
      std::memcpy(to, heads + static_cast<std::size_t>(next - height()) * rowBytes(), bytes);
    }
    next += part;
    count -= part;
    to += bytes;
  }
}

void PageRows::endPage() { skip(reader, height() - std::max<std::int64_t>(0, next)); }

/// Reads rows of the page itself, and keeps those that come again after its end.
void PageRows::readFromPage(std::uint8_t* to, std::int64_t count) {
  reader.read(to, count);
  const std::int64_t kept = std::min(count, below - next);
  if (kept <= 0) return;
  std::memcpy(ends.data() + static_cast<std::size_t>(above + next) * rowBytes(), to,
              static_cast<std::size_t>(kept) * rowBytes());
}

}  // namespace BP::tool
