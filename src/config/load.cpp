// How the root of a configuration is filled from its table.

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/config/cfg_procedura.hpp>

#include "config/node_access.hpp"
#include "core/tag_search.hpp"

namespace kap {
namespace {

using config::required;

const String kDefaultGroup = u"DEFAULT";

// Whether a value is a property string whose field was added at run time. Raises 5 when the
// property is opened and not closed.
bool isAddedAtRunTime(const String& value) {
    return tagsearch::read(value, u"ADD_RUNTIME").has_value();
}

// The elements of a collection as they are now; what happens to it meanwhile does not matter.
// Raises 13 for an element of another class.
template <class Element, class CollectionOfThem>
std::vector<Ref<Element>> elementsOf(const CollectionOfThem& collection) {
    std::vector<Ref<Element>> elements;
    for (const Variant& value : collection.Collezione()->elements()) {
        auto* element =
            value.isObject() ? dynamic_cast<Element*>(value.as<Ref<Object>>().get()) : nullptr;
        if (element == nullptr) {
            throw AutomationError(errors::kTypeMismatch);
        }
        elements.emplace_back(element);
    }
    return elements;
}

// Fields made at run time go, to be made again from the table; the others have their defaults.
void resetFields(CFG_Campi& fields) {
    for (const auto& field : elementsOf<CFG_Campo>(fields)) {
        if (isAddedAtRunTime(field->Valore())) {
            fields.Delete(field->Nome());
        } else {
            field->ResetDefault(/*resetTabella=*/false);
        }
    }
}

// The names stand in the text as they are, quotes and all.
String applicationList(const CFG_Applicazioni& root) {
    String list;
    for (const auto& application : elementsOf<CFG_Applicazione>(root)) {
        list += (list.empty() ? u"'" : u",'") + application->Nome() + u"'";
    }
    return list;
}

String selectOf(const char16_t* order, const String& table, const String& group,
                const String& applications) {
    return u" SELECT '" + String(order) + u"' as Ordina ,* FROM  " + table + u" " +
           u" WHERE Gruppo='" + group + u"' and Applicazione IN (" + applications + u")";
}

// The defaults for everybody first, the group's own rows behind them.
String loadStatement(const CFG_Applicazioni& root) {
    const String applications = applicationList(root);
    const String group = root.Gruppo();
    String statement = u" ( " + selectOf(u"0", root.NomeTabella(), kDefaultGroup, applications);
    if (!group.empty() && group != kDefaultGroup) {
        statement += u" UNION " + selectOf(u"1", root.NomeTabella(), group, applications);
    }
    return statement + u" ) " + u" ORDER BY Ordina ";
}

// Carries the rows of a configuration table into a tree.
class RowLoader {
public:
    RowLoader(const CFG_Applicazioni& root, const ado::Recordset& rows)
        : root_(root), fields_(rows.Fields()) {}

    void loadCurrentRow() const {
        const String value = text(u"Valore");
        CFG_Campi& fields = required(module()->Campi());
        const bool added = isAddedAtRunTime(value);
        const String name = text(u"Campo");
        const Ref<CFG_Campo> field = added ? fields.Add(name) : fields.Item(name);
        field->setValore(value);
        field->setFlag(text(u"Flag"));
        field->setGruppo(text(u"Gruppo"));
    }

private:
    // Raises 94 for Null.
    [[nodiscard]] String text(const char16_t* column) const {
        return convert::toString(fields_->Item(column)->Value());
    }

    [[nodiscard]] Ref<CFG_Modulo> module() const {
        const Ref<CFG_Applicazione> application = root_.Item(text(u"Applicazione"));
        const Ref<CFG_Procedura> procedure =
            required(application->Procedure()).Item(text(u"Procedura"));
        return required(procedure->Moduli()).Item(text(u"Modulo"));
    }

    const CFG_Applicazioni& root_;
    Ref<ado::Fields> fields_;
};

}  // namespace

void CFG_Applicazioni::RipristinaDefault() {
    for (const auto& application : elementsOf<CFG_Applicazione>(*this)) {
        for (const auto& procedure :
             elementsOf<CFG_Procedura>(required(application->Procedure()))) {
            for (const auto& module : elementsOf<CFG_Modulo>(required(procedure->Moduli()))) {
                resetFields(required(module->Campi()));
            }
        }
    }
}

void CFG_Applicazioni::CaricaCfgPersonalizzati() {
    RipristinaDefault();
    const auto rows = make<ado::Recordset>();
    rows->Open(loadStatement(*this), Variant(connection_), ado::CursorTypeEnum::adOpenStatic,
               ado::LockTypeEnum::adLockReadOnly);
    const RowLoader loader(*this, *rows);
    for (; !rows->Eof(); rows->MoveNext()) {
        loader.loadCurrentRow();
    }
    rows->Close();
}

}  // namespace kap
