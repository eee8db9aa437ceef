#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace kap::test {

// The bytes of a file; empty when there is none.
inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void putFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace kap::test
