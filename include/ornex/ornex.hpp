#pragma once

// The C++ layer of ornex_rt: typed images, argument checks that throw
// std::invalid_argument before anything is written, working memory and
// tables built for the caller, results in natural forms. Every call gives
// exactly what the exported kernel gives for the same arguments, except that
// optical flow is turned round to the direction the content moved, and can
// be refined coarse to fine over several kernel calls.

#include "ornex/image.hpp"
#include "ornex/motion.hpp"
#include "ornex/detection.hpp"
#include "ornex/geometry.hpp"
#include "ornex/draw.hpp"
