#pragma once

#include <pybind11/pybind11.h>

/// The parts of the module.
namespace BP::python {

void bindFilters(pybind11::module_& module);
void bindMatchers(pybind11::module_& module);
void bindFixed(pybind11::module_& module);
void bindPlans(pybind11::module_& module);

}  // namespace BP::python
