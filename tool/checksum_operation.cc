#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tool/checksum.h"
#include "tool/file.h"
#include "tool/json.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/picture_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

std::string hashOf(RowReader& reader) {
  const PictureHeader& header = reader.header();
  Checksum checksum(header);
  constexpr std::size_t blockSize = std::size_t{1} << 20;
  const std::size_t size = header.rowBytes();
  const auto step = static_cast<std::int64_t>(std::max<std::size_t>(1, blockSize / std::max<std::size_t>(1, size)));
  std::vector<std::uint8_t> block(static_cast<std::size_t>(std::min(step, header.rows())) * size);
  for (std::int64_t y = 0; y < header.rows() && size > 0; y += step) {
    const std::int64_t count = std::min(step, header.rows() - y);
    reader.read(block.data(), count);
    checksum.addRows(block.data(), count);
  }
  reader.finish();
  return checksum.text();
}

int run(const Values& values) {
  const std::string& path = values["IN"];
  const std::unique_ptr<RowReader> reader = openPicture(path);
  const std::string hash = hashOf(*reader);
  if (!values.has("--json")) {
    printOut(hash + "  " + legible(path) + "\n");
    return 0;
  }
  JsonObject json;
  json.add("file", path).add("type", nameOf(reader->header().type)).add("extents", reader->header().extents());
  printOut(json.add("sha256", hash).text() + "\n");
  return 0;
}

}  // namespace

Operation checksumOperation() {
  return {
      .name = "checksum",
      .summary = "Prints SHA-256 of the elements of a picture or an array",
      .options = {{.name = "IN", .meaning = "Picture or array", .isRequired = true}, jsonOption()},
      .details =
          "Two files have the same sum if their types, extents and all elements are the same, whatever their kind.\n"
          "What is hashed:\n"
          "  a line     type, space, extents, line break, such as \"uint8 3x640x480\"; dimension 0 first: channels "
          "if there is more than one, width, height, pages if there is more than one; those of NPY backwards\n"
          "  elements   in their order, dimension 0 fastest, in little-endian bytes\n"
          "With --checksum the other operations print the sum of what they write.\n",
      .example = "checksum photo.png",
      .run = run};
}

}  // namespace BP::tool
