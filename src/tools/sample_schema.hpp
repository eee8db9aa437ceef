#pragma once

namespace kap::tools {

// The statements that make the sample company's tables, empty.
[[nodiscard]] const char* sampleSchema();

}  // namespace kap::tools
