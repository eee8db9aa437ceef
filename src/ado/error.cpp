#include <kaputil/ado/error.hpp>

#include "automation/class_builder.hpp"
#include "data/failures.hpp"

namespace kap::ado {

const ClassDescription& Error::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Error>(u"Error", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b18",
                            u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b28")
            .property<&Error::Description>(u"Description")
            .property<&Error::NativeError>(u"NativeError")
            .property<&Error::Number>(u"Number")
            .property<&Error::Source>(u"Source")
            .property<&Error::SQLState>(u"SQLState")
            .property<&Error::HelpContext>(u"HelpContext")
            .property<&Error::HelpFile>(u"HelpFile")
            .build(u"Description");
    return description;
}

const ClassDescription& Errors::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Errors>(u"Errors", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b19",
                             u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b29")
            .instancing(Instancing::NotCreatable)
            .property<&Errors::Count>(u"Count")
            .property<&Errors::Item>(u"Item", {u"Index"})
            .method<&Errors::Clear>(u"Clear")
            .method<&Errors::Refresh>(u"Refresh")
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
