#pragma once

#include <pybind11/numpy.h>

#include <array>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "ZVSmartModel/Values.h"

namespace ZVSmartModel::Python {

namespace py = pybind11;

/// An array of the numbers in `rows`, without a copy; it keeps `owner`, whose they are.
template <class Scalar, std::size_t columns>
py::array ViewOf(const std::vector<std::array<Scalar, columns>>& rows, py::handle owner) {
    static_assert(sizeof(rows[0]) == columns * sizeof(Scalar));
    return py::array_t<Scalar>({rows.size(), columns}, reinterpret_cast<const Scalar*>(rows.data()),
                               owner);
}

/// The same for single numbers.
inline py::array ViewOf(const std::vector<std::uint32_t>& numbers, py::handle owner) {
    return py::array_t<std::uint32_t>(static_cast<py::ssize_t>(numbers.size()), numbers.data(),
                                      owner);
}

/// What keeps `value` for the arrays that view it.
template <class Value>
py::capsule KeeperOf(std::unique_ptr<Value> value) {
    return py::capsule(value.release(), [](void* kept) { delete static_cast<Value*>(kept); });
}

/// A picture as an array of height × width × 4 bytes.
inline py::array ViewOf(Picture picture) {
    auto kept = std::make_unique<Picture>(std::move(picture));
    const std::vector<std::size_t> shape = {kept->height, kept->width, 4};
    const std::uint8_t* const pixels = kept->pixels.data();
    return py::array_t<std::uint8_t>(shape, pixels, KeeperOf(std::move(kept)));
}

/// The picture in an array of that form. Throws ValueError for another one.
inline Picture PictureOf(const py::array_t<std::uint8_t, py::array::c_style>& pixels) {
    if (pixels.ndim() != 3 || pixels.shape(2) != 4) {
        throw py::value_error("a picture is an array of height x width x 4 uint8");
    }
    Picture picture;
    picture.height = static_cast<unsigned int>(pixels.shape(0));
    picture.width = static_cast<unsigned int>(pixels.shape(1));
    picture.pixels.assign(pixels.data(), pixels.data() + pixels.size());
    return picture;
}

}  // namespace ZVSmartModel::Python
