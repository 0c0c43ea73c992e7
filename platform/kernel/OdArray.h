#pragma once

#include <vector>

/// The kernel's growing array.
template <class Element>
using OdArray = std::vector<Element>;
