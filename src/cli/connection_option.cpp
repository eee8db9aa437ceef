#include "cli/connection_option.hpp"

namespace kap::cli {

Option connectionOption(std::string& target) {
    return {.name = "--connection",
            .placeholder = "DATABASE",
            .target = &target,
            .help =
                "A file (azienda.db), a name from the list of connections, or a connection "
                "string (\"Provider=KapLocal;Data Source=azienda.db\"); without it what "
                "KAPUTIL_CONNECTION says."};
}

}  // namespace kap::cli
