#pragma once

#include <string_view>

#include <kaputil/catalogue/documentation.hpp>

#include "cli/output/language.hpp"

// What the pages of the reference say around the documentation itself.
namespace kap::cli {

struct PageWords {
    std::string_view version;
    std::string_view typeLibrary;
    std::string_view module;
    std::string_view classTitle;
    std::string_view instancing;
    std::string_view defaultMember;
    std::string_view membersTitle;
    std::string_view whatItIs;
    std::string_view alsoMade;
    std::string_view objects;
    std::string_view enumerations;
    std::string_view none;
    std::string_view noMembers;
    std::string_view identity;
    std::string_view interface;
    std::string_view parameters;
    std::string_view result;
    std::string_view values;
    std::string_view errors;
    std::string_view example;
    std::string_view setup;
    std::string_view identifier;
    std::string_view isDefault;
    std::string_view value;
    std::string_view meaning;
    std::string_view hint;
    std::string_view reference;
    std::string_view search;
    std::string_view nothingFound;
    std::string_view allClasses;
    std::string_view otherLanguage;
    std::string_view examplesIn;
    std::string_view events;
    std::string_view creatable;
    std::string_view global;
    std::string_view notCreatable;
};

inline const PageWords& pageWords(Language language) {
    static constexpr PageWords kEnglish = {
        .version = "version",
        .typeLibrary = "type library",
        .module = "module",
        .classTitle = "Class",
        .instancing = "Instancing",
        .defaultMember = "Default member",
        .membersTitle = "Members",
        .whatItIs = "What it is",
        .alsoMade = "Also made by name",
        .objects = "What members take and give",
        .enumerations = "Constants of data access",
        .none = "none",
        .noMembers = "It has no members.",
        .identity = "Identity",
        .interface = "Interface",
        .parameters = "Parameters",
        .result = "Result",
        .values = "Values",
        .errors = "Errors",
        .example = "Example",
        .setup = "The examples begin with",
        .identifier = "Identifier",
        .isDefault = "the default member",
        .value = "Value",
        .meaning = "Meaning",
        .hint =
            "\"kaputil classes NAME\" shows a class, \"kaputil classes NAME.MEMBER\" one member of "
            "it.",
        .reference = "Reference",
        .search = "Search classes and members",
        .nothingFound = "Nothing has a name or a sentence like that.",
        .allClasses = "All classes",
        .otherLanguage = "Italiano",
        .examplesIn = "Examples in",
        .events = "Events",
        .creatable = "creatable",
        .global = "global, creatable",
        .notCreatable = "not creatable"};
    static constexpr PageWords kItalian = {
        .version = "versione",
        .typeLibrary = "libreria dei tipi",
        .module = "modulo",
        .classTitle = "Classe",
        .instancing = "Creazione",
        .defaultMember = "Predefinito",
        .membersTitle = "Membri",
        .whatItIs = "Che cos'è",
        .alsoMade = "Creabili per nome",
        .objects = "Oggetti che i membri ricevono e restituiscono",
        .enumerations = "Costanti dell'accesso ai dati",
        .none = "nessuno",
        .noMembers = "Non ha membri.",
        .identity = "Identità",
        .interface = "Interfaccia",
        .parameters = "Parametri",
        .result = "Risultato",
        .values = "Valori",
        .errors = "Errori",
        .example = "Esempio",
        .setup = "Gli esempi cominciano con",
        .identifier = "Identificatore",
        .isDefault = "il membro predefinito",
        .value = "Valore",
        .meaning = "Significato",
        .hint =
            "\"kaputil classes NOME\" mostra una classe, \"kaputil classes NOME.MEMBRO\" un suo "
            "membro.",
        .reference = "Riferimento",
        .search = "Cerca classi e membri",
        .nothingFound = "Nessun nome e nessuna frase corrispondono.",
        .allClasses = "Tutte le classi",
        .otherLanguage = "English",
        .examplesIn = "Esempi in",
        .events = "Eventi",
        .creatable = "creabile",
        .global = "globale, creabile",
        .notCreatable = "non creabile"};
    return language == Language::Italian ? kItalian : kEnglish;
}

[[nodiscard]] inline std::string_view instancingWords(Instancing instancing,
                                                      const PageWords& words) {
    switch (instancing) {
        case Instancing::Creatable:
            return words.creatable;
        case Instancing::Global:
            return words.global;
        case Instancing::NotCreatable:
            return words.notCreatable;
    }
    return {};
}

}  // namespace kap::cli
