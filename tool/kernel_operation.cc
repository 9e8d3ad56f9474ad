#include <string>

#include "tool/file.h"
#include "tool/fixed_types.h"
#include "tool/json.h"
#include "tool/kernel.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/quantised_kernel.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// The elements row by row, as in a kernel file.
std::string plainText(const FilterKernel& kernel) {
  std::string text;
  for (std::size_t i = 0; i < kernel.elements.size(); ++i) {
    const bool endsRow = (i + 1) % static_cast<std::size_t>(kernel.width) == 0;
    text += numberText(kernel.elements[i]) + (endsRow ? "\n" : ",");
  }
  return text;
}

JsonObject plainJson(const FilterKernel& kernel) {
  return JsonObject().add("width", kernel.width).add("height", kernel.height).add("elements", kernel.elements);
}

int run(const Values& values) {
  const FilterKernel kernel = parseKernel(values["KERNEL"], numberOf(values, "--scale"));
  const bool isJson = values.has("--json");
  if (!values.has("--fixed")) {
    printOut(isJson ? plainJson(kernel).text() + "\n" : plainText(kernel));
    return 0;
  }
  const KernelTypes types = parseKernelTypes(values["--fixed"]);
  const QuantisedKernel quantised = quantiseKernel(kernel, types);
  JsonObject json = plainJson(kernel);
  printOut(isJson ? json.add("fixed", quantisedKernelJson(types, quantised)).text() + "\n"
                  : quantisedKernelText(kernel, types, quantised));
  return 0;
}

}  // namespace

Operation kernelOperation() {
  return {
      .name = "kernel",
      .summary = "Prints the elements of a kernel, also in fixed point with what its sums need",
      .options = {{.name = "KERNEL", .meaning = "The filter, see below", .isRequired = true},
                  kernelScaleOption(),
                  {.name = "--fixed",
                   .meaning = "Shows the kernel in fixed point; types of input and filter, see below",
                   .form = "TYPES"},
                  jsonOption()},
      .details =
          "Kernels:\n" + kernelForms() +
          "Fixed point: TYPES are such as input=u8.0,filter=s16.14,rounding=nearest,overflow=saturate, where s16.14 is "
          "a\nsigned type of 16 bits, 14 of them fraction. Types have at most 32 bits here.\n" +
          fixedModeNames() +
          "Without --fixed the elements are printed, row by row, as a kernel file has them. With it:\n"
          "  the elements, in units of the filter's last bit; with --scale and that unit they are a CSV kernel\n"
          "  error        the greatest distance of an element from what it was\n"
          "  gain         the sum of the elements: what becomes of a constant input of 1\n"
          "  sums         range of the sums of some or all products, whatever the values of the input\n"
          "  accumulator  the narrowest type that has all sums, with the fraction of exact products\n",
      .example = "kernel gaussian:5:1.1 --fixed input=u8.0,filter=u8.8",
      .run = run};
}

}  // namespace BP::tool
