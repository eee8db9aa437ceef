#include "cli/demo/demo_options.hpp"

#include <memory>

#include "cli/demo/demo_command.hpp"

namespace kap::cli {

CommandDescription demoOptions() {
    const auto demo = std::make_shared<DemoCommand>();
    return {.name = "demo",
            .summary = "Two users edit the documents of a sample company.",
            .options = {{.name = "--database",
                         .placeholder = "FILE",
                         .target = &demo->database,
                         .help = "Keep the company in this file, made when it is missing; without "
                                 "it the demo uses a file of its own and removes it."},
                        {.name = "--seed",
                         .placeholder = "N",
                         .target = &demo->seed,
                         .help = "The number that the sample data is made from.",
                         .showsDefault = true},
                        {.name = "--json",
                         .target = &demo->json,
                         .help = "Print one JSON object with every step."}},
            .run = [demo] { return demo->run(); }};
}

}  // namespace kap::cli
