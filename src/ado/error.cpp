#include <kaputil/ado/error.hpp>

#include "automation/class_builder.hpp"
#include "data/failures.hpp"

namespace kap::ado {

const ClassDescription& Error::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Error>(u"Error", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b18",
                            u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b28")
            .summary(u"One error or message that the database reported.")
            .property<&Error::Description>(u"Description", u"The sentence for people.")
            .property<&Error::NativeError>(u"NativeError", u"The database's own number.")
            .property<&Error::Number>(u"Number", u"The data-access code that clients compare.")
            .property<&Error::Source>(u"Source", u"The component that reported it.")
            .property<&Error::SQLState>(u"SQLState", u"The five-character state.")
            .property<&Error::HelpContext>(u"HelpContext", u"0: there is no help file.")
            .property<&Error::HelpFile>(u"HelpFile", u"Empty: there is no help file.")
            .build(u"Description");
    return description;
}

const ClassDescription& Errors::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Errors>(u"Errors", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b19",
                             u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b29")
            .summary(u"The errors and messages of a connection's last operation that had any.")
            .instancing(Instancing::NotCreatable)
            .property<&Errors::Count>(u"Count", u"How many there are.")
            .property<&Errors::Item>(u"Item", u"The error at a position from 0.", {u"Index"})
            .method<&Errors::Clear>(u"Clear", {}, u"Forgets them all.")
            .method<&Errors::Refresh>(u"Refresh", {}, u"Asks for them again.")
            .build(u"Item");
    return description;
}

std::int32_t Errors::Count() const {
    return static_cast<std::int32_t>(errors_.size());
}

Ref<Error> Errors::Item(std::int32_t index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= errors_.size()) {
        fail::itemNotFound();
    }
    return errors_[static_cast<std::size_t>(index)];
}

}  // namespace kap::ado
