// The demo of the command line, step by step, as a program in C++ that is bound by the type
// libraries: story.exe COMPANY FOLDER
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>

#include "early_bound.hpp"

namespace {

using early::Library;
using early::Object;
using early::Value;

constexpr const wchar_t* kLibrary = L"{749c4a7f-4612-49ed-994a-2e3285c059ca}";
constexpr const wchar_t* kDataAccess = L"{e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b01}";
constexpr int kYear = 2025;

int chapter = 0;

void say(const std::wstring& who, const std::wstring& member, const std::wstring& what) {
    std::string line =
        std::to_string(chapter) + " " + early::plain(who + L" " + member + L": " + what);
    line.erase(line.find_last_not_of(' ') + 1);
    std::printf("%s\n", line.c_str());
}

std::wstring yesNo(bool value) {
    return value ? L"yes" : L"no";
}

std::wstring trimmed(const std::wstring& text) {
    const auto first = text.find_first_not_of(L' ');
    return first == std::wstring::npos
               ? L""
               : text.substr(first, text.find_last_not_of(L' ') + 1 - first);
}

std::wstring keyIs(const wchar_t* kind, const std::wstring& number) {
    return L"Anno = 2025 AND Tipo = '" + std::wstring(kind) + L"' AND Numero = " + number;
}

std::wstring query(const wchar_t* kind, const std::wstring& number) {
    return L"SELECT * FROM mag_TDocumenti WHERE " + keyIs(kind, number);
}

std::wstring failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        return {text.begin(), text.end()};
    }
    return L"";
}

// Both libraries, and what programs do with their classes.
struct Libraries {
    Library kap = early::load(kLibrary);
    Library data = early::load(kDataAccess);

    [[nodiscard]] Object make(const wchar_t* name) const {
        return Object::create(kap.at(std::wstring(L"_") + name),
                              (std::wstring(L"KapUtil.") + name).c_str());
    }
    // What a member gives, as an object of a class.
    [[nodiscard]] Object one(const wchar_t* name, const Value& value) const {
        return {kap.at(std::wstring(L"_") + name), value};
    }
    [[nodiscard]] Object ofData(const wchar_t* name, const Value& value) const {
        return {data.at(std::wstring(L"_") + name), value};
    }
    [[nodiscard]] Object add(const wchar_t* collection, const Value& parent, const wchar_t* made,
                             const wchar_t* name) const {
        return one(made, one(collection, parent).call(L"Add", name));
    }
    [[nodiscard]] Object fields(const Object& root, const wchar_t* module) const {
        const auto application = one(L"CFG_Applicazione", root.call(L"Item", L"Vendite"));
        const auto procedures = one(L"CFG_Procedure", application.call(L"Procedure"));
        const auto procedure = one(L"CFG_Procedura", procedures.call(L"Item", L"Documenti"));
        const auto modules = one(L"CFG_Moduli", procedure.call(L"Moduli"));
        return one(L"CFG_Campi", one(L"CFG_Modulo", modules.call(L"Item", module)).call(L"Campi"));
    }
    [[nodiscard]] Object field(const Object& root, const wchar_t* module,
                               const wchar_t* name) const {
        return one(L"CFG_Campo", fields(root, module).call(L"Item", name));
    }
};

class User {
public:
    User(const Libraries& libraries, const wchar_t* name, const std::wstring& file)
        : libraries_(libraries),
          name_(name),
          functions_(libraries.make(L"StdFunctions")),
          connection_(Object::create(libraries.data.at(L"_Connection"), L"KapLocal.Connection")) {
        connection_.call(L"Open", L"Provider=KapLocal;Data Source=" + file);
    }

    [[nodiscard]] const Object& functions() const { return functions_; }
    [[nodiscard]] const Object& connection() const { return connection_; }
    [[nodiscard]] const Object& form() const { return form_; }
    void tell(const wchar_t* member, const std::wstring& what) const { say(name_, member, what); }

    [[nodiscard]] std::wstring scalar(const std::wstring& sql) const {
        const auto rows = libraries_.ofData(L"Recordset", connection_.call(L"Execute", sql));
        const auto fields = libraries_.ofData(L"Fields", rows.call(L"Fields"));
        return libraries_.ofData(L"Field", fields.call(L"Item", 0)).call(L"Value").text();
    }

    // Calls a member of the functions whose first argument is the connection.
    template <class... Given>
    Value connected(const wchar_t* member, Given&&... given) const {
        return functions_.call(member, connection_.value(), std::forward<Given>(given)...);
    }

    void read(const std::wstring& sql, const wchar_t* shown) {
        Value connection = connection_.value();
        Value text = sql;
        Value record;
        const bool found = functions_.call(L"DB_Read", {&connection, &text, &record}).isTrue();
        form_ = libraries_.make(L"CProprieta");
        form_.call(L"Scrivi", L"", record);
        tell(L"DB_Read", yesNo(found) + L" " + trimmed(leggi(shown)));
    }
    [[nodiscard]] std::wstring leggi(const wchar_t* name) const {
        return form_.call(L"Leggi", name).text();
    }
    void change(const wchar_t* name, const Value& value) const {
        form_.call(L"Scrivi", name, value);
        tell(L"Scrivi", name + (L" " + leggi(name)));
    }
    void result(const wchar_t* member, bool done) const {
        const auto error = libraries_.one(L"CErrore", functions_.call(L"Errore"));
        tell(member, yesNo(done) + L" " + error.call(L"LeggiAttributo", L"ERR_MSG1").text());
    }
    void save(const std::wstring& sql) const {
        result(L"DB_Update", connected(L"DB_Update", sql, form_.call(L"Leggi")).isTrue());
    }
    void remove(const std::wstring& sql) const {
        Value connection = connection_.value();
        Value text = sql;
        Value record;
        functions_.call(L"DB_Read", {&connection, &text, &record});
        result(L"DB_Delete", functions_.call(L"DB_Delete", {&connection, &text, &record}).isTrue());
    }
    [[nodiscard]] std::wstring number(const wchar_t* mode) const {
        return functions_.call(L"Progressivi", L"PRV", L"D", mode, kYear, 0.0, connection_.value())
            .text();
    }
    void ask(const wchar_t* mode) const { tell(L"Progressivi", number(mode)); }
    void cents(const wchar_t* member, const Value& value) const {
        tell(member, std::to_wstring(std::lround(value.number() * 100)) + L" cents");
    }

    [[nodiscard]] Object script() const {
        Object made = libraries_.make(L"CSQL");
        made.set(L"ActiveConnection", connection_);
        return made;
    }
    void transfer(const Object& script,
                  const std::vector<std::pair<const wchar_t*, std::wstring>>& parameters) const {
        script.call(L"Clear");
        const auto properties = libraries_.one(L"CProprieta", script.call(L"Parametri"));
        for (const auto& [name, value] : parameters) {
            properties.call(L"Scrivi", name, value);
        }
        script.call(L"AddTmp");
        tell(L"AddTmp", parameters[0].second + L" to " + parameters[1].second);
    }
    void execute(const Object& script, const std::wstring& document) const {
        const bool done = script.call(L"Execute").isTrue();
        tell(L"Execute", yesNo(done) + L" " +
                             scalar(L"SELECT COUNT(*) FROM mag_RDocumenti WHERE " + document) +
                             L" lines " +
                             scalar(L"SELECT CAST(ISNULL(SUM(Importo), 0) * 100 AS int) FROM "
                                    L"mag_RDocumenti WHERE " +
                                    document) +
                             L" cents");
    }

    [[nodiscard]] Object settings(const wchar_t* group) const {
        const Object root = libraries_.make(L"CFG_Applicazioni");
        root.put(L"Gruppo", group);
        root.set(L"ActiveConnection", connection_);
        const auto application = libraries_.one(L"CFG_Applicazione", root.call(L"Add", L"Vendite"));
        const auto procedure = libraries_.add(L"CFG_Procedure", application.call(L"Procedure"),
                                              L"CFG_Procedura", L"Documenti");
        const Value modules = procedure.call(L"Moduli");
        const auto fieldOf = [&](const Value& fields, const wchar_t* name) {
            return libraries_.add(L"CFG_Campi", fields, L"CFG_Campo", name);
        };
        const auto fieldsOf = [&](const wchar_t* module) {
            return libraries_.add(L"CFG_Moduli", modules, L"CFG_Modulo", module).call(L"Campi");
        };
        const Value heading = fieldsOf(L"Testata");
        fieldOf(heading, L"TipoProposto").put(L"ValoreDefault", L"FAI");
        const Object discount = fieldOf(heading, L"ScontoMassimo");
        discount.put(L"ValoreDefault", L"10");
        discount.put(L"ValoriConsentiti", L"10|15|20|25");
        fieldOf(fieldsOf(L"Righe"), L"Passo").put(L"ValoreDefault", L"5");
        libraries_.make(L"CFG_Stampa")
            .call(L"InitDefault", fieldOf(fieldsOf(L"Stampe"), L"Fattura").value());
        root.call(L"CaricaCfgPersonalizzati");
        return root;
    }
    void tellSettings(const Object& root) const {
        const auto shown = [&](const wchar_t* name) {
            const Object field = libraries_.field(root, L"Testata", name);
            return field.call(L"Valore").text() + L" of " + field.call(L"Gruppo").text();
        };
        tell(L"CaricaCfgPersonalizzati", shown(L"ScontoMassimo") + L", " + shown(L"TipoProposto"));
    }

private:
    const Libraries& libraries_;
    std::wstring name_;
    Object functions_;
    Object connection_;
    Object form_;
};

class Story {
public:
    Story(const std::wstring& file, std::wstring folder)
        : anna_(libraries_, L"Anna", file),
          bruno_(libraries_, L"Bruno", file),
          folder_(std::move(folder)) {}

    void tell() {
        invoice_ = anna_.scalar(
            L"SELECT MAX(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND Tipo = 'FAI'");
        quotation_ = anna_.scalar(
            L"SELECT MIN(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND Tipo = 'PRV'");
        tellOfDocuments();
        tellOfANewDocument();
        tellOfScripts();
        tellOfValues();
        tellOfSettings();
        tellOfLayouts();
        tellOfFiles();
    }

private:
    void tellOfDocuments() {
        chapter = 1;
        std::wstring sql = query(L"FAI", invoice_);
        anna_.read(sql, L"Note");
        bruno_.read(sql, L"Note");
        bruno_.tell(L"Leggi",
                    L"the same version " + yesNo(anna_.leggi(L"AGGID") == bruno_.leggi(L"AGGID")));
        chapter = 2;
        const std::wstring version = anna_.leggi(L"AGGID");
        anna_.change(L"Sconto", 5);
        anna_.change(L"Note", L"Consegna entro oggi");
        anna_.save(sql);
        anna_.read(sql, L"Note");
        anna_.tell(L"Leggi", L"another version " + yesNo(anna_.leggi(L"AGGID") != version));
        bruno_.change(L"Note", L"Porto assegnato");
        bruno_.save(sql);
        bruno_.read(sql, L"Note");
        chapter = 3;
        sql = query(L"PRV", quotation_);
        bruno_.read(sql, L"Numero");
        anna_.remove(sql);
        bruno_.change(L"Note", L"Valido 30 giorni");
        bruno_.save(sql);
    }

    void tellOfANewDocument() {
        chapter = 4;
        added_ = anna_.number(L"L");
        document_ = keyIs(L"PRV", added_);
        anna_.ask(L"L");
        bruno_.ask(L"L");
        anna_.ask(L"S");
        chapter = 5;
        const std::wstring sql = query(L"PRV", added_);
        anna_.read(sql, L"Numero");
        anna_.change(L"Anno", kYear);
        anna_.change(L"Tipo", L"PRV");
        anna_.change(L"Numero", added_);
        anna_.change(L"Data", L"31/12/2025");
        anna_.change(L"Cliente", 1001);
        anna_.change(L"Valuta", L"EUR");
        anna_.change(L"Note", L"Richiesta telefonica");
        anna_.save(sql);
        bruno_.read(sql, L"Note");
        bruno_.ask(L"L");
        chapter = 6;
        const std::wstring customers =
            L"SELECT Clienti.* FROM Clienti INNER JOIN mag_TDocumenti ON mag_TDocumenti.Cliente = "
            L"Clienti.Codice WHERE ";
        const Object found = libraries_.one(
            L"CProprieta", anna_.connected(L"kapLeggiRecord", customers + keyIs(L"FAI", invoice_),
                                           L"RagioneSociale, Localita"));
        anna_.tell(L"kapLeggiRecord", found.call(L"Leggi", L"RagioneSociale").text() + L", " +
                                          found.call(L"Leggi", L"Localita").text());
        for (const std::wstring& key : {keyIs(L"FAI", invoice_), document_}) {
            const std::wstring lines = L"SELECT MAX(Riga) FROM mag_RDocumenti WHERE " + key;
            anna_.tell(L"Riga_Prog", anna_.connected(L"Riga_Prog", lines, 10, 10).text());
        }
    }

    void tellOfScripts() {
        chapter = 7;
        const Object hers = anna_.script();
        const Object his = bruno_.script();
        anna_.connection().call(
            L"Execute",
            L"CREATE TABLE #Righe (Anno smallint, Tipo varchar(3), Numero int, Riga int, "
            L"Descrizione varchar(60), "
            L"Qta decimal(12, 3), Prezzo money) INSERT INTO #Righe VALUES (2025, 'PRV', " +
                added_ + L", 10, 'Trapano a percussione', 2, 89.90), (2025, 'PRV', " + added_ +
                L", 20, 'Serie di punte', 5, 12.50)");
        anna_.transfer(hers, {{L"FROM", L"#Righe"},
                              {L"TO", L"mag_RDocumenti"},
                              {L"DELETE_FROM", L"SI"},
                              {L"mag_RDocumenti.Importo", L"#Righe.Qta * #Righe.Prezzo"}});
        hers.call(L"Command",
                  L"UPDATE mag_TDocumenti SET Annotazioni = 'Righe aggiunte' WHERE " + document_,
                  L"Annotazione fallita");
        anna_.execute(hers, document_);
        chapter = 8;
        his.call(L"Command", L"DELETE mag_RDocumenti WHERE Riga = 10 AND " + document_,
                 L"Cancellazione fallita");
        his.call(L"Command",
                 L"INSERT INTO mag_RDocumenti (Anno, Tipo, Numero, Riga) VALUES (2025, 'PRV', " +
                     added_ + L", 20)",
                 L"Riga presente");
        bruno_.execute(his, document_);
        const std::wstring told =
            libraries_.one(L"CErrore", his.call(L"Errore")).call(L"MsgToString").text();
        bruno_.tell(L"MsgToString",
                    L"his own message " + yesNo(told.find(L"Riga presente") != std::wstring::npos));
        anna_.transfer(hers, {{L"FROM", L"mag_RDocumenti"},
                              {L"TO", L"#Righe"},
                              {L"WHERE", document_},
                              {L"DELETE_FROM", L"SI"}});
        anna_.execute(hers, document_);
    }

    void tellOfValues() {
        const Object& functions = anna_.functions();
        chapter = 9;
        anna_.cents(L"KapRound", functions.call(L"KapRound", 2.675, 2));
        anna_.cents(L"KapRound", functions.call(L"KapRound", 1.239, 2, L"I"));
        for (const wchar_t* typed : {L"25122003", L"31022003"}) {
            anna_.tell(L"kapControllaData", functions.call(L"kapControllaData", typed).text());
        }
        anna_.tell(L"NomeMese", functions.call(L"NomeMese", 9, L"FRA").text());
        anna_.tell(L"ConvertiData",
                   trimmed(functions.call(L"ConvertiData", L"2003-03-05", L"ITA").text()));
        chapter = 10;
        anna_.cents(L"CalcVal", anna_.connected(L"CalcVal", L"EUR", 10, 3, 10, 0, 0, 5));
        anna_.cents(L"CalcVal", anna_.connected(L"CalcVal", L"JPY", 1234.5, 3));
        anna_.cents(L"CalcVal", anna_.connected(L"CalcVal", L"EUR", 1000, 10, 150));
        chapter = 11;
        anna_.tell(L"CalcVal",
                   L"nothing " + yesNo(anna_.connected(L"CalcVal", L"XYZ", 10, 3).isEmpty()));
    }

    void tellOfSettings() {
        chapter = 12;
        hers_ = anna_.settings(L"UFFICIO");
        his_ = bruno_.settings(L"BANCO");
        anna_.tellSettings(hers_);
        bruno_.tellSettings(his_);
        const Object discount = libraries_.field(hers_, L"Testata", L"ScontoMassimo");
        anna_.tell(L"Valore", failureOf([&] { discount.put(L"Valore", L"30"); }));
    }

    void tellOfLayouts() {
        chapter = 13;
        const Object field = libraries_.one(
            L"CFG_Campo", libraries_.fields(hers_, L"Stampe").call(L"Add", L"Urgente"));
        field.put(L"Valore", L"<ADD_RUNTIME></ADD_RUNTIME>");
        const Object made = libraries_.make(L"CFG_Stampa");
        made.call(L"Init", field.value());
        made.put(L"Titolo", L"Consegna urgente");
        made.put(L"Copie", L"2");
        field.call(L"Update");
        anna_.tell(L"CFG_Stampa", field.call(L"Valore").text());
        hers_.call(L"CaricaCfgPersonalizzati");
        const Object layout = libraries_.make(L"CFG_Stampa");
        layout.call(L"Init", libraries_.field(hers_, L"Stampe", L"Urgente").value());
        anna_.tell(L"CFG_Stampa", yesNo(layout.call(L"AddRunTime").isTrue()) + L" " +
                                      layout.call(L"Titolo").text() + L" x" +
                                      layout.call(L"Copie").text());
        his_.call(L"CaricaCfgPersonalizzati");
        bruno_.tell(L"CFG_Stampa", failureOf([&] {
                        static_cast<void>(libraries_.field(his_, L"Stampe", L"Urgente"));
                    }));
        Value alsoInTheTable = true;
        libraries_.field(hers_, L"Stampe", L"Urgente").call(L"ResetDefault", {&alsoInTheTable});
        anna_.tell(L"ResetDefault", L"done");
    }

    [[nodiscard]] std::wstring firstLine(const wchar_t* name) const {
        std::ifstream in(early::plain(folder_ + L"\\" + name));
        std::string line;
        std::getline(in, line);
        return {line.begin(), line.end()};
    }

    void tellOfFiles() {
        chapter = 14;
        const bool done =
            anna_.functions()
                .call(L"EsportaTXT",
                      L"SELECT Codice, Descrizione, Dec_Imp FROM vtx_TabVal ORDER BY Codice",
                      anna_.connection().value(), L"VALUTE.TXT", folder_)
                .isTrue();
        anna_.tell(L"EsportaTXT", yesNo(done));
        anna_.tell(L"EsportaTXT", firstLine(L"VALUTE.TXT").substr(0, 18));
        anna_.functions().call(L"WLog", folder_ + L"\\vertex.log", L"Valute esportate");
        anna_.tell(L"WLog", firstLine(L"vertex.log"));
        const Object contact = libraries_.make(L"CEMail");
        contact.put(L"EMail", L"info@rossi.example");
        contact.put(L"CodAna", L"1001");
        contact.put(L"RagioneSociale", L"Ferramenta Rossi");
        const bool kept = contact.call(L"Update").isTrue();
        anna_.tell(L"Update", yesNo(kept) + L" " + contact.call(L"VisualizzaCome").text());
    }

    Libraries libraries_;
    User anna_;
    User bruno_;
    std::wstring folder_;
    std::wstring invoice_;
    std::wstring quotation_;
    std::wstring added_;
    std::wstring document_;
    Object hers_;
    Object his_;
};

}  // namespace

int wmain(int count, wchar_t** words) {
    if (count != 3) {
        return 2;
    }
    CoInitialize(nullptr);
    int status = 0;
    try {
        Story(words[1], words[2]).tell();
    } catch (const std::exception& error) {
        std::printf("failed: %s\n", error.what());
        status = 1;
    }
    CoUninitialize();
    return status;
}
