// Few rows of choices in which many things meet: where all combinations would be too many, a covering array
// still has every pair of values.

#pragma once

#include <cstddef>
#include <functional>
#include <vector>

// Rows with one value for each factor, from 0 up to its size. Of any two factors that are `paired`, every
// pair of values is in some row; of every factor each value is. The same arguments give the same rows.
std::vector<std::vector<std::size_t>> CoveringArray(
    const std::vector<std::size_t>& sizes,
    const std::function<bool(std::size_t factor, std::size_t other)>& paired);
