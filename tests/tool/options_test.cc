#include "tool/options.h"

#include <gmock/gmock.h>

namespace BP::tool {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(OptionsTest, NamesGoToTheirValues) {
  EXPECT_EQ(parseMode("full"), OutputModeFull);
  EXPECT_EQ(parseNormalise("energy"), NormWindowEnergy);
  EXPECT_EQ(parseNormalise("none"), NormNone);
  EXPECT_EQ(parseSumType("float"), ElementType::float32);
  EXPECT_EQ(parseSumType("double"), ElementType::float64);
  EXPECT_EQ(parsePad("circular").type, PadTypeCircular);
  EXPECT_EQ(parsePad("constant").value, 0.0);
  EXPECT_EQ(parsePad("constant:1/4").value, 0.25);
  EXPECT_EQ(parsePad("constant:-2,1e3").value, std::complex<double>(-2, 1000));
  EXPECT_EQ(namesOf(padTypes), "constant|replicate|symmetric|circular");
  EXPECT_EQ(nameOf(outputModes, OutputModeSame), "same");
}

TEST(OptionsTest, RectanglesOfAnyRank) {
  const Rectangle plane = parseRectangle("-1,5,20x10", "--roi");
  EXPECT_THAT(plane.first, ElementsAre(-1, 5));
  EXPECT_THAT(plane.extents, ElementsAre(20, 10));
  EXPECT_THAT(parseRectangle("7,3", "--roi").extents, ElementsAre(3));
  EXPECT_EQ(extentsText({20, 10, 3}), "20x10x3");
}

TEST(OptionsTest, ErrorsNameTheOptionItsValueAndWhatIsAllowed) {
  const auto refuses = [](auto&& parse, const char* text, const char* option, const char* allowed) {
    EXPECT_THAT([&] { parse(text); }, testing::ThrowsMessage<std::runtime_error>(
                                          AllOf(HasSubstr(option), HasSubstr(inQuotes(text)), HasSubstr(allowed))));
  };
  refuses(parseMode, "Same", "--mode", "valid, same, full");
  refuses(parseMode, "", "--mode", "valid, same, full");
  refuses(parseNormalise, "max", "--normalise", "none, energy");
  refuses(parseSumType, "half", "--type", "float, double");
  refuses(parsePad, "constant:", "--pad", "finite number");
  refuses(parsePad, "symmetric:0", "--pad", "constant:V, replicate, symmetric, circular");
  refuses([](const char* text) { return parseExtents(text, "--input"); }, "3x2147483648", "--input", "1 to 2147483647");
}

}  // namespace
}  // namespace BP::tool
