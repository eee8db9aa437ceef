#include "numbering/number_text.hpp"

#include <cmath>

#include <kaputil/automation/plain_text.hpp>

namespace kap::numbering {

String numberText(double number) {
    const bool whole = std::isfinite(number) && std::trunc(number) == number;
    return whole ? plain::fixed(number, 0) : plain::shortest(number);
}

}  // namespace kap::numbering
