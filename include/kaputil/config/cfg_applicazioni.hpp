#pragma once

#include <kaputil/ado/connection.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/config/cfg_collection.hpp>

namespace kap {

class CFG_Applicazione;

// The root of a configuration: the applications, procedures, modules and fields that a program
// declares, as they are set for one group of users.
//
//     auto root = kap::make<kap::CFG_Applicazioni>();
//     root->setGruppo(u"UFFICIO");
//     root->setActiveConnection(connection);
//     auto stampa = root->Add(u"Vendite")->Procedure()->Add(u"Ordini")->Moduli()->Add(u"Stampa");
//     stampa->Campi()->Add(u"Copie")->setValoreDefault(u"1");
//     root->CaricaCfgPersonalizzati();
//
// What the company and its groups changed is in a table with the text columns Gruppo, Applicazione,
// Procedura, Modulo, Campo, Valore and Flag, the first five of which identify a row. The rows of
// the group "DEFAULT" are for everybody.
class KAPUTIL_EXPORT CFG_Applicazioni final : public CfgCollection {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The group of users, the first part of every path. Empty in a new root.
    [[nodiscard]] String Gruppo() const { return group_; }
    void setGruppo(const String& value) { group_ = value; }

    // The configuration table, "KAP_CFG" in a new root.
    [[nodiscard]] String NomeTabella() const { return table_; }
    void setNomeTabella(const String& value) { table_ = value; }

    // The open connection that the table is read and written through; the root shares it and never
    // opens or closes it.
    [[nodiscard]] Ref<ado::Connection> ActiveConnection() const { return connection_; }
    void setActiveConnection(const Ref<ado::Connection>& value) { connection_ = value; }

    [[nodiscard]] String Path() const { return group_; }

    // Adopts an application with all that it holds, whose `Parent` becomes this root, or appends a
    // new one of the name that anything else converts to. Raises 457 when the name is there
    // already; an application given then has this root as its `Parent` all the same.
    Ref<CFG_Applicazione> Add(const Variant& item);

    // The application of this name, ignoring case. Raises -2147221503 with the description
    // "CFG   GROUP\NAME  non  trovato" when there is none.
    [[nodiscard]] Ref<CFG_Applicazione> Item(const String& nome) const;

    // Sets the tree to its defaults, then to what the table holds: first the rows of the group
    // "DEFAULT", then those of `Gruppo`, unless it is empty or "DEFAULT" itself. Every field that
    // has a row is customised afterwards, and its `Gruppo` tells whose row it was. A row whose
    // value is a property string with the property ADD_RUNTIME makes its field; such fields of an
    // earlier load go first.
    //
    // The first failure ends the load, with the rows before it loaded, and is raised:
    //   -2147221503  a row for a procedure, a module or a field that is not declared, or a value or
    //                flag that the field does not allow
    //   457          a second row for a field that the load has made
    //   94           Null in a column of a row
    //   5            a value that opens the property ADD_RUNTIME and does not close it
    //   91           a node of the tree lacks the collection below it
    // and the errors of the database: among them -2147217900 without any application or with an
    // apostrophe in a name, and 3709 without an open connection.
    void CaricaCfgPersonalizzati();

protected:
    [[nodiscard]] String ownerPath() const override { return Path(); }

private:
    void RipristinaDefault();

    String group_;
    String table_ = u"KAP_CFG";
    Ref<ado::Connection> connection_;
};

}  // namespace kap
