#include <string>

#include "tool/file.h"
#include "tool/fixed_types.h"
#include "tool/kernel.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/quantised_kernel.h"

namespace BP::tool {

namespace {

int run(const Values& values) {
  const KernelTypes types = parseKernelTypes(values["--fixed"]);
  const FilterKernel kernel = parseKernel(values["KERNEL"], numberOf(values, "--scale"));
  printOut(quantisedKernelText(kernel, types, quantiseKernel(kernel, types)));
  return 0;
}

}  // namespace

Operation kernelOperation() {
  return {
      .name = "kernel",
      .summary = "Shows a kernel in fixed point: its elements, its gain, what its sums need",
      .options =
          {{.name = "KERNEL", .meaning = "The filter, see below", .isRequired = true},
           kernelScaleOption(),
           {.name = "--fixed", .meaning = "Types of input and filter, see below", .form = "TYPES", .isRequired = true}},
      .details =
          "Kernels:\n" + kernelForms() +
          "Fixed point: TYPES are such as input=u8.0,filter=s16.14,rounding=nearest,overflow=saturate, where s16.14 is "
          "a\nsigned type of 16 bits, 14 of them fraction. Types have at most 32 bits here.\n" +
          fixedModeNames() +
          "What is printed:\n"
          "  the elements, in units of the filter's last bit; with --scale and that unit they are a CSV kernel\n"
          "  error        the greatest distance of an element from what it was\n"
          "  gain         the sum of the elements: what becomes of a constant input of 1\n"
          "  sums         range of the sums of some or all products, whatever the values of the input\n"
          "  accumulator  the narrowest type that has all sums, with the fraction of exact products\n",
      .example = "kernel gaussian:5:1.1 --fixed input=u8.0,filter=u8.8",
      .run = run};
}

}  // namespace BP::tool
