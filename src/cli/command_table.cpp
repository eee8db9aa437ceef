#include "cli/command_table.hpp"

#include "cli/commands/batch/batch_options.hpp"
#include "cli/commands/call/call_options.hpp"
#include "cli/commands/classes/classes_options.hpp"
#include "cli/commands/config/config_options.hpp"
#include "cli/commands/copy/copy_options.hpp"
#include "cli/commands/describe/describe_options.hpp"
#include "cli/commands/export/export_options.hpp"
#include "cli/commands/import/import_options.hpp"
#include "cli/commands/manual/manual_options.hpp"
#include "cli/commands/numbers/numbers_options.hpp"
#include "cli/commands/registry/registry_options.hpp"
#include "cli/commands/sql/sql_options.hpp"
#include "cli/demo/demo_options.hpp"

namespace kap::cli {

std::vector<CommandDescription> allCommands() {
    return {demoOptions(),   classesOptions(),   callOptions(),     sqlOptions(),
            batchOptions(),  configOptions(),    registryOptions(), exportOptions(),
            importOptions(), numbersOptions(),   copyOptions(),     describeOptions(),
            manualOptions(), completionOptions()};
}

}  // namespace kap::cli
