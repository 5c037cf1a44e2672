#pragma once

#include <Eigen/Core>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace fuzz {

/// Numbers out of an input's bytes, over and over.
class NumberSource {
 public:
  /// @param size  not 0
  NumberSource(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  std::uint8_t Byte() { return data_[place_++ % size_]; }
  bool Flag() { return Byte() % 2 != 0; }
  Eigen::Index Size(Eigen::Index most) { return 1 + Byte() % most; }

  /// Any double at all where `wild`, otherwise one of 256 between -1 and 1.
  Eigen::MatrixXd Matrix(Eigen::Index rows, Eigen::Index columns, bool wild) {
    Eigen::MatrixXd matrix(rows, columns);
    for (double& number : matrix.reshaped()) {
      number = (Byte() - 127.5) / 128.0;
      if (!wild) continue;
      std::uint8_t bytes[sizeof number];
      for (std::uint8_t& byte : bytes) byte = Byte();
      std::memcpy(&number, bytes, sizeof number);
    }
    return matrix;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
  std::size_t place_ = 0;
};

}  // namespace fuzz
