#include <string>
#include <string_view>

#include <kaputil/catalogue/documentation.hpp>

namespace kap {

// On Windows the plain names are those of the system's own data access.
std::string vbscriptForm(std::string_view script) {
    constexpr std::string_view kElsewhere = "CreateObject(\"ADODB.";
    constexpr std::string_view kOnWindows = "CreateObject(\"KapLocal.";
    std::string made(script);
    for (std::size_t at = made.find(kElsewhere); at != std::string::npos;
         at = made.find(kElsewhere, at + kOnWindows.size())) {
        made.replace(at, kElsewhere.size(), kOnWindows);
    }
    return made;
}

}  // namespace kap
