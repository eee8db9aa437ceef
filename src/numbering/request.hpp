#pragma once

#include <cstdint>

#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::numbering {

// What a caller of the numbering asked for; <kaputil/numbering/document_numbers.hpp> tells more.
struct Request {
    String documentType;
    String sequence;
    String mode;
    std::int16_t year = 0;
    double number = 0;
    Variant& connection;
    String counterCode;  // kNoCounter: found through the document type
    String documentTypes;
    std::int16_t handling = 0;

    static constexpr const char16_t* kNoCounter = u"°°°";

    [[nodiscard]] bool provisional() const { return sequence == String(u"P"); }
    [[nodiscard]] bool writing() const { return mode == String(u"S"); }
    [[nodiscard]] bool byCode() const { return counterCode != String(kNoCounter); }
    // The column of the sequence asked for.
    [[nodiscard]] const char16_t* column() const { return provisional() ? u"n_Prov" : u"n_Def"; }
};

}  // namespace kap::numbering
