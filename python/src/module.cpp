#include <pybind11/pybind11.h>

#include "bindings.hpp"
#include "ornex_rt.h"

PYBIND11_MODULE(ornex, module)
{
    module.doc() = R"(Image- and video-processing kernels of ornex_rt on numpy arrays.

Images are arrays of shape (rows, cols), or (rows, cols, planes) for colour.
The library works column-major: Fortran-ordered arrays (numpy.asfortranarray,
order='F') are used as they are, others are copied once. Drawing functions
draw into the caller's array, which must be Fortran-ordered and writeable.
Results are Fortran-ordered arrays. Every function gives exactly the bits of
the library's C++ layer, and releases the GIL while the kernel runs.)";
    module.attr("__version__") = ornex_rt_version;
    ornex::python::addMotion(module);
    ornex::python::addDetection(module);
    ornex::python::addGeometry(module);
    ornex::python::addDraw(module);
    ornex::python::addText(module);
}
