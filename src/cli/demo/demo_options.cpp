#include "cli/demo/demo_options.hpp"

#include <memory>

#include "cli/demo/demo_command.hpp"

namespace kap::cli {

CommandDescription demoOptions() {
    const auto demo = std::make_shared<DemoCommand>();
    return {.name = "demo",
            .summary = {"Two users edit the documents of a sample company.",
                        "Due utenti modificano i documenti di un'azienda di esempio."},
            .options = {{.name = "--database",
                         .placeholder = "FILE",
                         .target = &demo->database,
                         .help = {"Keep the company in this file, made when it is missing; without "
                                  "it the demo uses a file of its own and removes it.",
                                  "Conserva l'azienda in questo file, creato se manca; senza, la "
                                  "demo usa un file suo e lo elimina."}},
                        {.name = "--seed",
                         .placeholder = "N",
                         .target = &demo->seed,
                         .help = {"The number that the sample data is made from.",
                                  "Il numero da cui nascono i dati di esempio."},
                         .showsDefault = true},
                        {.name = "--json",
                         .target = &demo->json,
                         .help = {"Print one JSON object with every step.",
                                  "Stampa un oggetto JSON con ogni passo."}}},
            .run = [demo] { return demo->run(); }};
}

}  // namespace kap::cli
