#pragma once

namespace kap::cli {

// The statements that make the sample company's tables, empty.
[[nodiscard]] const char* sampleSchema();

}  // namespace kap::cli
