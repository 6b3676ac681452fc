#pragma once

// Each family adds its functions to the module.

#include <pybind11/pybind11.h>

namespace ornex::python {

void addMotion(pybind11::module_ &module);
void addDetection(pybind11::module_ &module);
void addGeometry(pybind11::module_ &module);
void addDraw(pybind11::module_ &module);
void addText(pybind11::module_ &module);

} // namespace ornex::python
