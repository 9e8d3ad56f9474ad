#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tool/kernel.h"

/// Kernels that are known by name, with settings behind colons, such as "gaussian:1.5".
namespace BP::tool {

/// True if `text` begins with the name of a kernel, up to a colon or its end.
bool isKernelName(std::string_view text);

/// The kernel that `text` names. Throws `std::runtime_error` that says what is allowed, for other settings than the
/// name takes.
FilterKernel namedKernel(const std::string& text);

/// The line of numbers whose outer product with itself is the kernel that `text` names; nothing if there is none.
std::optional<FilterKernel> namedLine(const std::string& text);

/// The forms of all names and what they mean, a line each.
std::string namedKernelForms();
/// The same of those that are a line, too.
std::string namedLineForms();

/// The forms of all names, with commas between them.
std::string namedKernelList();

}  // namespace BP::tool
