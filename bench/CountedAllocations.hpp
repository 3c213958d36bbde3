#pragma once

#include <cstddef>

/// How often the program has asked for heap memory through `new`.
std::size_t Allocations();
