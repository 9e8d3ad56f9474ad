#include "tool/stream_filter.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <future>
#include <memory>
#include <utility>
#include <vector>

#include "tool/page_rows.h"
#include "tool/progress.h"

namespace BP::tool {

namespace {

using Rows = std::vector<std::uint8_t>;

/// A filtered band.
struct DoneBand {
  Rows rows;
  std::int64_t count = 0;
  SampleCounts counts;
};

/// Bytes for each row while bands are under way.
std::size_t bytesOfRow(const BandShape& shape, const BandFilter& filter, const Workers& workers) {
  const std::size_t width = static_cast<std::size_t>(std::max(shape.in.width, shape.out.width));
  const std::size_t underWay = workers.count() + 2;
  const std::size_t plane = width * filter.bytesPerColumn();
  const std::size_t row = underWay * (shape.in.rowBytes() + shape.out.rowBytes()) + workers.count() * plane;
  return std::max<std::size_t>(1, row);
}

/// The height of bands that are not a whole page.
std::int64_t rowsPerBand(const BandShape& shape, const BandFilter& filter, std::size_t rowBytes, std::size_t memory) {
  const std::int64_t most = bandRows(shape.in.height, shape.window, rowBytes, memory);
  // Bands beyond the size of caches gain nothing, and with few bands workers have nothing to do.
  constexpr std::size_t cached = std::size_t{1} << 22;
  const std::size_t width = static_cast<std::size_t>(std::max(shape.in.width, shape.out.width));
  const std::int64_t suitable = std::max<std::int64_t>(
      4 * shape.window.height, static_cast<std::int64_t>(cached / (width * filter.bytesPerColumn())));
  return std::clamp<std::int64_t>(suitable, 1, most);
}

/// The rows of the input that bands need, one after the other.
class RowWindow {
 public:
  RowWindow(PageRows& pageRows, std::size_t bytes) : page(pageRows), rowBytes(bytes), first(page.first()) {}

  /// The input rows of `band`, which does not begin before the last one.
  Rows take(const Band& band) {
    Rows rows(static_cast<std::size_t>(band.inRows) * rowBytes);
    const std::int64_t known = std::max<std::int64_t>(0, first + count - band.firstIn);
    const std::int64_t kept = std::min(known, band.inRows);
    if (kept > 0) {
      std::memcpy(rows.data(), held.data() + static_cast<std::size_t>(band.firstIn - first) * rowBytes,
                  static_cast<std::size_t>(kept) * rowBytes);
    }
    if (band.inRows > kept) page.read(rows.data() + static_cast<std::size_t>(kept) * rowBytes, band.inRows - kept);
    return rows;
  }

  /// Keeps rows for the next band, which may begin among them.
  void keep(const Band& band, const Rows& rows, std::int64_t nextFirst) {
    const std::int64_t skipped = std::clamp<std::int64_t>(nextFirst - band.firstIn, 0, band.inRows);
    first = band.firstIn + skipped;
    count = band.inRows - skipped;
    held.assign(rows.begin() + skipped * static_cast<std::ptrdiff_t>(rowBytes), rows.end());
  }

 private:
  PageRows& page;
  std::size_t rowBytes;
  Rows held;
  std::int64_t first;
  std::int64_t count = 0;
};

/// Filters pages, with some bands under way at any time.
class Stream {
 public:
  Stream(PageRows& pageRows, RowWriter& rowWriter, BandFilter& bandFilter, const BandShape& bandShape,
         const StreamMeans& means)
      : page(pageRows),
        writer(rowWriter),
        filter(bandFilter),
        shape(bandShape),
        workers(means.workers),
        checksum(means.checksum),
        progress(shape.out.rows(), shape.out.width) {}

  /// Lets the bands under way end: they use what is about to go.
  ~Stream() {
    for (const std::future<DoneBand>& band : underWay) band.wait();
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  void filterPage(const std::vector<Band>& bands) {
    page.beginPage();
    RowWindow window(page, shape.in.rowBytes());
    for (std::size_t i = 0; i < bands.size(); ++i) {
      const Band& band = bands[i];
      const auto rows = std::make_shared<const Rows>(window.take(band));
      if (i + 1 < bands.size()) window.keep(band, *rows, bands[i + 1].firstIn);
      give(band, rows);
    }
    page.endPage();
  }

  SampleCounts finish() {
    while (!underWay.empty()) writeBand();
    return counts;
  }

 private:
  void give(const Band& band, const std::shared_ptr<const Rows>& rows) {
    underWay.push_back(workers.give([this, band, rows] {
      DoneBand done;
      done.count = band.outRows;
      done.rows.resize(static_cast<std::size_t>(band.outRows) * shape.out.rowBytes());
      done.counts = filter.filter(band, rows->data(), done.rows.data());
      return done;
    }));
    while (underWay.size() > workers.count()) writeBand();
  }

  void writeBand() {
    std::future<DoneBand> next = std::move(underWay.front());
    underWay.pop_front();
    const DoneBand band = next.get();
    writer.write(band.rows.data(), band.count);
    if (checksum != nullptr) checksum->addRows(band.rows.data(), band.count);
    counts.add(band.counts);
    written += band.count;
    progress.done(written);
  }

  PageRows& page;
  RowWriter& writer;
  BandFilter& filter;
  const BandShape& shape;
  Workers& workers;
  Checksum* checksum;
  Progress progress;
  std::deque<std::future<DoneBand>> underWay;
  SampleCounts counts;
  std::int64_t written = 0;
};

/// Filters all pages in bands of up to `rows` output rows.
SampleCounts filterPages(PageRows& page, RowWriter& writer, BandFilter& filter, const BandShape& shape,
                         const StreamMeans& means, std::int64_t rows) {
  const std::vector<Band> bands = bandsOf(shape.in.height, shape.window, rows, page.isWrapped());
  Stream stream(page, writer, filter, shape, means);
  for (std::int64_t i = 0; i < shape.in.pages; ++i) stream.filterPage(bands);
  return stream.finish();
}

/// The pages of a picture as they are, or wrapped where both of their ends are needed and do not fit the memory.
PageRows pagesOf(RowReader& reader, const BandShape& shape, const StreamMeans& means, std::size_t rowBytes) {
  const Window& window = shape.window;
  const bool fits = shape.in.height <= static_cast<std::int64_t>(means.memory / (2 * rowBytes));
  if (shape.isWhole || fits || !needsBothEnds(window)) return PageRows(reader);
  const bool isRepeatable = means.reopen && window.height <= shape.in.height;
  if (isRepeatable) return PageRows(reader, means.reopen(), window);
  checkMemory(shape.in.height, rowBytes, means.memory, "a circular pad");
  return PageRows(reader);
}

}  // namespace

SampleCounts streamFilter(RowReader& reader, RowWriter& writer, BandFilter& filter, const BandShape& shape,
                          const StreamMeans& means) {
  const std::size_t rowBytes = bytesOfRow(shape, filter, means.workers);
  PageRows page = pagesOf(reader, shape, means, rowBytes);
  const bool isWhole = shape.isWhole || (needsBothEnds(shape.window) && !page.isWrapped());
  const std::int64_t rows = isWhole ? shape.out.height : rowsPerBand(shape, filter, rowBytes, means.memory);
  const SampleCounts counts = filterPages(page, writer, filter, shape, means, rows);
  reader.finish();
  writer.finish();
  return counts;
}

}  // namespace BP::tool
