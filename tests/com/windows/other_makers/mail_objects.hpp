#pragma once

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/ref.hpp>

namespace kap::test {

// A mail client that writes down what it is asked to do: its member Asked gives that back and
// begins anew. It knows one contact, by the key "nota@esempio.it", in both of its folders: the one
// for contacts and Ufficio/Clienti. It refuses contacts that are filed as "rifiutato".
[[nodiscard]] Ref<Object> makeMailClient();

}  // namespace kap::test
