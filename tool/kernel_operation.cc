#include <memory>
#include <string>

#include "tool/file.h"
#include "tool/fixed_types.h"
#include "tool/kernel.h"
#include "tool/operations.h"
#include "tool/quantised_kernel.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

struct Arguments {
  std::string kernel;
  std::string scale = "1";
  std::string fixed;
};

void run(const Arguments& arguments) {
  const KernelTypes types = parseKernelTypes(arguments.fixed);
  const Kernel kernel = parseKernel(arguments.kernel, parseNumber(arguments.scale, "--scale"));
  printOut(quantisedKernelText(kernel, types, quantiseKernel(kernel, types)));
}

}  // namespace

void addKernel(CLI::App& command) {
  CLI::App* operation =
      command.add_subcommand("kernel", "Shows a kernel in fixed point: its elements, its gain, what its sums need");
  const auto arguments = std::make_shared<Arguments>();
  operation->add_option("KERNEL", arguments->kernel, "The filter, see below")->required()->type_name("");
  operation->add_option("--scale", arguments->scale, "Multiplies each element of the kernel; such as 0.1 or 1/16")
      ->type_name("NUMBER")
      ->capture_default_str();
  operation->add_option("--fixed", arguments->fixed, "Types of input and filter, see below")
      ->required()
      ->type_name("TYPES");
  operation->footer(
      "Kernels:\n" + kernelForms() +
      "Fixed point: TYPES are such as input=u8.0,filter=s16.14,rounding=nearest,overflow=saturate, where s16.14 is a\n"
      "signed type of 16 bits, 14 of them fraction. Types have at most 32 bits here.\n" +
      modeNames() +
      "What is printed:\n"
      "  the elements, in units of the filter's last bit; with --scale and that unit they are a CSV kernel\n"
      "  error        the greatest distance of an element from what it was\n"
      "  gain         the sum of the elements: what becomes of a constant input of 1\n"
      "  sums         range of the sums of some or all products, whatever the values of the input\n"
      "  accumulator  the narrowest type that has all sums, with the fraction of exact products\n"
      "Example: orvane kernel gaussian:5:1.1 --fixed input=u8.0,filter=u8.8\n");
  operation->callback([arguments] { run(*arguments); });
}

}  // namespace BP::tool
