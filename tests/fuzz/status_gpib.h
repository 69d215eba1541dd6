// How the fuzz target tells its GPIB library what to answer.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

/// The bytes that decide status, error, count and data of the calls to come; they must outlive them.
using StatusFeed = void(const std::uint8_t* data, std::size_t size);
}
