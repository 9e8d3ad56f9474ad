#include "tool/npy_header.h"

#include <charconv>
#include <stdexcept>

#include "tool/text.h"

namespace BP::tool {

namespace {

struct TypeCode {
  std::string_view code;
  ElementType type;
};

constexpr TypeCode typeCodes[] = {
    {"b1", ElementType::boolean},    {"i1", ElementType::int8},    {"i2", ElementType::int16},
    {"i4", ElementType::int32},      {"i8", ElementType::int64},   {"u1", ElementType::uint8},
    {"u2", ElementType::uint16},     {"u4", ElementType::uint32},  {"u8", ElementType::uint64},
    {"f4", ElementType::float32},    {"f8", ElementType::float64}, {"c8", ElementType::complex64},
    {"c16", ElementType::complex128}};

/// Reads the dictionary from its beginning to its end.
class Dictionary {
 public:
  Dictionary(std::string_view text, const std::string& shownName) : rest(text), what(shownName) {}

  NpyHeader read() {
    expect('{', "a dictionary");
    for (skipSpace(); !take('}'); skipSpace()) {
      readItem();
      skipSpace();
      if (!take(',') && (rest.empty() || rest[0] != '}')) fail("a comma or '}' is missing after a value");
    }
    skipSpace();
    if (!rest.empty()) fail("there is more than spaces after the dictionary");
    if (!hasType || !hasOrder || !hasShape) fail("it needs 'descr', 'fortran_order' and 'shape'");
    return header;
  }

 private:
  [[noreturn]] void fail(const std::string& problem) const {
    throw std::runtime_error(what + ": damaged header: " + problem);
  }

  void skipSpace() {
    const std::size_t first = rest.find_first_not_of(" \t\n\r");
    rest.remove_prefix(first == std::string_view::npos ? rest.size() : first);
  }

  bool take(char c) {
    if (rest.empty() || rest[0] != c) return false;
    rest.remove_prefix(1);
    return true;
  }

  bool take(std::string_view word) {
    if (!rest.starts_with(word)) return false;
    rest.remove_prefix(word.size());
    return true;
  }

  void expect(char c, const std::string& meaning) {
    skipSpace();
    if (!take(c)) fail(meaning + " is missing");
  }

  std::string_view readQuoted(const std::string& meaning) {
    const char quote = rest.empty() ? ' ' : rest[0];
    if (quote != '\'' && quote != '"') fail(meaning + " must be a text in quotes");
    const std::size_t end = rest.find(quote, 1);
    if (end == std::string_view::npos) fail("a quote is not closed");
    const std::string_view text = rest.substr(1, end - 1);
    rest.remove_prefix(end + 1);
    return text;
  }

  void readItem() {
    const std::string_view key = readQuoted("a key");
    expect(':', "the colon after " + inQuotes(key));
    skipSpace();
    if (key == "descr") {
      once(hasType, key);
      readType();
    } else if (key == "fortran_order") {
      once(hasOrder, key);
      header.isFortran = take("True");
      if (!header.isFortran && !take("False")) fail("'fortran_order' must be True or False");
    } else if (key == "shape") {
      once(hasShape, key);
      readShape();
    } else {
      fail("unknown key " + inQuotes(key));
    }
  }

  void once(bool& seen, std::string_view key) const {
    if (seen) fail(inQuotes(key) + " is given twice");
    seen = true;
  }

  void readType() {
    if (!rest.empty() && rest[0] == '[') unsupported("a record");
    const std::string_view descr = readQuoted("'descr'");
    const char order = descr.empty() ? ' ' : descr[0];
    for (const TypeCode& code : typeCodes) {
      if (descr.substr(descr.empty() ? 0 : 1) != code.code) continue;
      const bool known = order == '<' || order == '>' || order == '=' || (order == '|' && sizeOf(code.type) == 1);
      if (!known) break;
      header.type = code.type;
      header.order = order == '<' ? std::endian::little : order == '>' ? std::endian::big : std::endian::native;
      return;
    }
    unsupported(inQuotes(descr));
  }

  [[noreturn]] void unsupported(const std::string& type) const {
    std::string allowed;
    for (const TypeCode& code : typeCodes) allowed.append(allowed.empty() ? "" : ", ").append(nameOf(code.type));
    throw std::runtime_error(what + ": elements of type " + type + " are not supported; allowed are " + allowed);
  }

  void readShape() {
    expect('(', "the tuple of 'shape'");
    for (skipSpace(); !take(')'); skipSpace()) {
      std::int64_t extent = 0;
      const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), extent);
      if (error != std::errc{} || extent < 0) fail("'shape' must be a tuple of whole numbers from 0 on, of 64 bits");
      rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
      take('L');  // as Python 2 wrote long numbers
      header.shape.push_back(extent);
      skipSpace();
      // One number needs its comma: without it Python reads a number in parentheses.
      if (!take(',') && (header.shape.size() == 1 || rest.empty() || rest[0] != ')')) {
        fail("a comma or ')' is missing in 'shape'");
      }
    }
    if (header.shape.size() > maxNpyRank) {
      throw std::runtime_error(what + " has " + std::to_string(header.shape.size()) + " axes; at most " +
                               std::to_string(maxNpyRank) + " are allowed");
    }
  }

  std::string_view rest;
  const std::string& what;
  NpyHeader header;
  bool hasType = false, hasOrder = false, hasShape = false;
};

}  // namespace

NpyHeader parseNpyHeader(std::string_view text, const std::string& what) { return Dictionary(text, what).read(); }

std::string shapeText(const std::vector<std::int64_t>& shape) {
  std::string text = "(";
  for (std::size_t axis = 0; axis < shape.size(); ++axis) {
    text += (axis == 0 ? "" : " ") + std::to_string(shape[axis]);
    if (axis + 1 < shape.size() || axis == 0) text += ",";
  }
  return text + ")";
}

std::string npyHeaderText(const NpyHeader& header) {
  std::string code;
  for (const TypeCode& known : typeCodes) {
    if (known.type == header.type) code = known.code;
  }
  const char* order = sizeOf(header.type) == 1 ? "|" : header.order == std::endian::little ? "<" : ">";
  return "{'descr': '" + (order + code) + "', 'fortran_order': " + (header.isFortran ? "True" : "False") +
         ", 'shape': " + shapeText(header.shape) + ", }";
}

}  // namespace BP::tool
