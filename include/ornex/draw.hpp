#pragma once

#include "ornex/image.hpp"
#include "ornex_rt.h"

namespace ornex {
} // namespace ornex
