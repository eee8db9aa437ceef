#include "cli/connection_option.hpp"

namespace kap::cli {

Option connectionOption(std::string& target) {
    return {.name = "--connection",
            .placeholder = "DATABASE",
            .target = &target,
            .help = {"A file (azienda.db), a name from the list of connections, or a connection "
                     "string (\"Provider=KapLocal;Data Source=azienda.db\"); without it what "
                     "KAPUTIL_CONNECTION says.",
                     "Un file (azienda.db), un nome dell'elenco delle connessioni o una stringa di "
                     "connessione (\"Provider=KapLocal;Data Source=azienda.db\"); se manca, quello "
                     "che dice KAPUTIL_CONNECTION."}};
}

}  // namespace kap::cli
