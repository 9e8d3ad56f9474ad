#pragma once

#include <pybind11/pybind11.h>

/// The parts of the module.
namespace BP::python {

void bindFilters(pybind11::module_& module);
void bindMatchers(pybind11::module_& module);
void bindFixed(pybind11::module_& module);
void bindPlans(pybind11::module_& module);

/// What pickling and copying need: the object is made again of what `C::arguments` returns.
template <class C>
auto reduce() {
  return [](const pybind11::object& self) {
    const pybind11::tuple arguments = self.cast<const C&>().arguments();
    const pybind11::object rebuild = pybind11::module_::import("orvane._objects").attr("rebuild");
    return pybind11::make_tuple(rebuild,
                                pybind11::make_tuple(pybind11::type::of(self), pybind11::type::of<C>(), arguments));
  };
}

}  // namespace BP::python
