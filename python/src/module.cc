#include <exception>

#include "python/src/bind.h"
#include "python/src/elements.h"
#include "python/src/runs.h"

PYBIND11_MODULE(_orvane, m) {
  namespace py = pybind11;
  m.doc() = "The compiled part of orvane.";
  BP::python::countForks();
  m.attr("version") = std::string(orvane::version());
  py::register_exception<orvane::Cancelled>(m, "Cancelled", PyExc_RuntimeError);
  py::register_exception_translator([](std::exception_ptr error) {
    try {
      if (error) std::rethrow_exception(error);
    } catch (const BP::python::WrongType& wrong) {
      PyErr_SetString(PyExc_TypeError, wrong.what());
    }
  });
  BP::python::bindFilters(m);
  BP::python::bindMatchers(m);
  BP::python::bindFixed(m);
  BP::python::bindPlans(m);
}
