// The demo of the command line, step by step, as a client of another language: story.js COMPANY FOLDER
//
// This language has no variables by reference. Where a member writes into one, the program gets the same by another way: the
// fields of a record by their names (kapLeggiRecord), and its version from a recordset.
var YEAR = 2025;
var chapter = 0;
var file = WScript.Arguments(0);
var folder = WScript.Arguments(1);

function say(who, member, what) {
    WScript.Echo((chapter + " " + who.name + " " + member + ": " + what).replace(/\s+$/, ""));
}

function yesNo(value) {
    return value ? "yes" : "no";
}

function trimmed(text) {
    return String(text).replace(/^\s+|\s+$/g, "");
}

function keyIs(kind, number) {
    return "Anno = " + YEAR + " AND Tipo = '" + kind + "' AND Numero = " + number;
}

function query(kind, number) {
    return "SELECT * FROM mag_TDocumenti WHERE " + keyIs(kind, number);
}

function User(name) {
    this.name = name;
    this.functions = new ActiveXObject("KapUtil.StdFunctions");
    this.connection = new ActiveXObject("KapLocal.Connection");
    this.connection.Open("Provider=KapLocal;Data Source=" + file);
    this.form = null;
}

User.prototype.scalar = function (sql) {
    return Number(this.connection.Execute(sql).Fields(0).Value);
};

User.prototype.read = function (sql, shown) {
    var found = this.functions.DB_Read(this.connection, sql, "");
    if (found) {
        this.form = this.functions.kapLeggiRecord(this.connection, sql);
        this.form.Scrivi("AGGID", this.functions.TSToHex(this.connection.Execute(sql).Fields("AGGID").Value));
    } else {
        this.form = new ActiveXObject("KapUtil.CProprieta");
        this.form.Scrivi("AGGID", "");
    }
    say(this, "DB_Read", yesNo(found) + " " + (found ? trimmed(this.form.Leggi(shown)) : ""));
};

User.prototype.change = function (name, value) {
    this.form.Scrivi(name, value);
    say(this, "Scrivi", name + " " + this.form.Leggi(name));
};

User.prototype.result = function (member, done) {
    say(this, member, yesNo(done) + " " + this.functions.Errore.LeggiAttributo("ERR_MSG1"));
};

User.prototype.save = function (sql) {
    this.result("DB_Update", this.functions.DB_Update(this.connection, sql, this.form.Leggi()));
};

User.prototype.number = function (mode) {
    return this.functions.Progressivi("PRV", "D", mode, YEAR, 0, this.connection);
};

User.prototype.ask = function (mode) {
    say(this, "Progressivi", this.number(mode));
};

User.prototype.cents = function (member, value) {
    say(this, member, Math.round(value * 100) + " cents");
};

User.prototype.script = function () {
    var made = new ActiveXObject("KapUtil.CSQL");
    made.ActiveConnection = this.connection;
    return made;
};

User.prototype.transfer = function (script, parameters) {
    script.Clear();
    for (var i = 0; i < parameters.length; i += 2) {
        script.Parametri.Scrivi(parameters[i], parameters[i + 1]);
    }
    script.AddTmp();
    say(this, "AddTmp", parameters[1] + " to " + parameters[3]);
};

User.prototype.execute = function (script, document) {
    var done = script.Execute();
    say(this, "Execute", yesNo(done) + " " + this.scalar("SELECT COUNT(*) FROM mag_RDocumenti WHERE " + document) + " lines " +
        this.scalar("SELECT CAST(ISNULL(SUM(Importo), 0) * 100 AS int) FROM mag_RDocumenti WHERE " + document) + " cents");
};

User.prototype.settings = function (group) {
    var root = new ActiveXObject("KapUtil.CFG_Applicazioni");
    root.Gruppo = group;
    root.ActiveConnection = this.connection;
    var modules = root.Add("Vendite").Procedure.Add("Documenti").Moduli;
    var heading = modules.Add("Testata").Campi;
    heading.Add("TipoProposto").ValoreDefault = "FAI";
    var discount = heading.Add("ScontoMassimo");
    discount.ValoreDefault = "10";
    discount.ValoriConsentiti = "10|15|20|25";
    modules.Add("Righe").Campi.Add("Passo").ValoreDefault = "5";
    new ActiveXObject("KapUtil.CFG_Stampa").InitDefault(modules.Add("Stampe").Campi.Add("Fattura"));
    root.CaricaCfgPersonalizzati();
    return root;
};

function fields(root, module) {
    return root.Item("Vendite").Procedure.Item("Documenti").Moduli.Item(module).Campi;
}

function failureOf(action) {
    try {
        action();
    } catch (e) {
        return e.description;
    }
    return "";
}

var anna = new User("Anna");
var bruno = new User("Bruno");
var invoice = anna.scalar("SELECT MAX(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND Tipo = 'FAI'");
var quotation = anna.scalar("SELECT MIN(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND Tipo = 'PRV'");
var sql, document, i;

chapter = 1;
sql = query("FAI", invoice);
anna.read(sql, "Note");
bruno.read(sql, "Note");
say(bruno, "Leggi", "the same version " + yesNo(anna.form.Leggi("AGGID") == bruno.form.Leggi("AGGID")));

chapter = 2;
var version = anna.form.Leggi("AGGID");
anna.change("Sconto", 5);
anna.change("Note", "Consegna entro oggi");
anna.save(sql);
anna.read(sql, "Note");
say(anna, "Leggi", "another version " + yesNo(anna.form.Leggi("AGGID") != version));
bruno.change("Note", "Porto assegnato");
bruno.save(sql);
bruno.read(sql, "Note");

chapter = 3;
sql = query("PRV", quotation);
bruno.read(sql, "Numero");
anna.result("DB_Delete", anna.functions.DB_Delete(anna.connection, sql, bruno.form.Leggi()));
bruno.change("Note", "Valido 30 giorni");
bruno.save(sql);

chapter = 4;
var added = anna.number("L");
anna.ask("L");
bruno.ask("L");
anna.ask("S");

chapter = 5;
sql = query("PRV", added);
document = keyIs("PRV", added);
anna.read(sql, "Numero");
var entered = [["Anno", YEAR], ["Tipo", "PRV"], ["Numero", added], ["Data", "31/12/2025"], ["Cliente", 1001], ["Valuta", "EUR"],
    ["Note", "Richiesta telefonica"]];
for (i = 0; i < entered.length; i++) {
    anna.change(entered[i][0], entered[i][1]);
}
anna.save(sql);
bruno.read(sql, "Note");
bruno.ask("L");

chapter = 6;
var customer = anna.functions.kapLeggiRecord(anna.connection, "SELECT Clienti.* FROM Clienti INNER JOIN mag_TDocumenti ON " +
    "mag_TDocumenti.Cliente = Clienti.Codice WHERE " + keyIs("FAI", invoice), "RagioneSociale, Localita");
say(anna, "kapLeggiRecord", customer.Leggi("RagioneSociale") + ", " + customer.Leggi("Localita"));
var documents = [keyIs("FAI", invoice), document];
for (i = 0; i < documents.length; i++) {
    say(anna, "Riga_Prog", anna.functions.Riga_Prog(anna.connection, "SELECT MAX(Riga) FROM mag_RDocumenti WHERE " + documents[i], 10, 10));
}

chapter = 7;
var hers = anna.script();
var his = bruno.script();
anna.connection.Execute("CREATE TABLE #Righe (Anno smallint, Tipo varchar(3), Numero int, Riga int, Descrizione varchar(60), " +
    "Qta decimal(12, 3), Prezzo money) INSERT INTO #Righe VALUES (2025, 'PRV', " + added + ", 10, 'Trapano a percussione', 2, 89.90), " +
    "(2025, 'PRV', " + added + ", 20, 'Serie di punte', 5, 12.50)");
anna.transfer(hers, ["FROM", "#Righe", "TO", "mag_RDocumenti", "DELETE_FROM", "SI", "mag_RDocumenti.Importo", "#Righe.Qta * #Righe.Prezzo"]);
hers.Command("UPDATE mag_TDocumenti SET Annotazioni = 'Righe aggiunte' WHERE " + document, "Annotazione fallita");
anna.execute(hers, document);

chapter = 8;
his.Command("DELETE mag_RDocumenti WHERE Riga = 10 AND " + document, "Cancellazione fallita");
his.Command("INSERT INTO mag_RDocumenti (Anno, Tipo, Numero, Riga) VALUES (2025, 'PRV', " + added + ", 20)", "Riga presente");
bruno.execute(his, document);
say(bruno, "MsgToString", "his own message " + yesNo(his.Errore.MsgToString().indexOf("Riga presente") >= 0));
anna.transfer(hers, ["FROM", "mag_RDocumenti", "TO", "#Righe", "WHERE", document, "DELETE_FROM", "SI"]);
anna.execute(hers, document);

chapter = 9;
anna.cents("KapRound", anna.functions.KapRound(2.675, 2));
anna.cents("KapRound", anna.functions.KapRound(1.239, 2, "I"));
say(anna, "kapControllaData", anna.functions.kapControllaData("25122003"));
say(anna, "kapControllaData", anna.functions.kapControllaData("31022003"));
say(anna, "NomeMese", anna.functions.NomeMese(9, "FRA"));
say(anna, "ConvertiData", trimmed(anna.functions.ConvertiData("2003-03-05", "ITA")));

chapter = 10;
anna.cents("CalcVal", anna.functions.CalcVal(anna.connection, "EUR", 10, 3, 10, 0, 0, 5));
anna.cents("CalcVal", anna.functions.CalcVal(anna.connection, "JPY", 1234.5, 3));
anna.cents("CalcVal", anna.functions.CalcVal(anna.connection, "EUR", 1000, 10, 150));

chapter = 11;
say(anna, "CalcVal", "nothing " + yesNo(typeof anna.functions.CalcVal(anna.connection, "XYZ", 10, 3) == "undefined"));

chapter = 12;
var herSettings = anna.settings("UFFICIO");
var hisSettings = bruno.settings("BANCO");
function sayFields(who, root) {
    var discount = fields(root, "Testata").Item("ScontoMassimo");
    var kind = fields(root, "Testata").Item("TipoProposto");
    say(who, "CaricaCfgPersonalizzati", discount.Valore + " of " + discount.Gruppo + ", " + kind.Valore + " of " + kind.Gruppo);
}
sayFields(anna, herSettings);
sayFields(bruno, hisSettings);
say(anna, "Valore", failureOf(function () { fields(herSettings, "Testata").Item("ScontoMassimo").Valore = "30"; }));

chapter = 13;
var field = fields(herSettings, "Stampe").Add("Urgente");
field.Valore = "<ADD_RUNTIME></ADD_RUNTIME>";
var layout = new ActiveXObject("KapUtil.CFG_Stampa");
layout.Init(field);
layout.Titolo = "Consegna urgente";
layout.Copie = "2";
field.Update();
say(anna, "CFG_Stampa", field.Valore);
herSettings.CaricaCfgPersonalizzati();
layout = new ActiveXObject("KapUtil.CFG_Stampa");
layout.Init(fields(herSettings, "Stampe").Item("Urgente"));
say(anna, "CFG_Stampa", yesNo(layout.AddRunTime) + " " + layout.Titolo + " x" + layout.Copie);
hisSettings.CaricaCfgPersonalizzati();
say(bruno, "CFG_Stampa", failureOf(function () { fields(hisSettings, "Stampe").Item("Urgente"); }));
fields(herSettings, "Stampe").Item("Urgente").ResetDefault(true);
say(anna, "ResetDefault", "done");

chapter = 14;
var files = new ActiveXObject("Scripting.FileSystemObject");
function firstLine(name) {
    var stream = files.OpenTextFile(folder + "\\" + name, 1);
    var line = stream.ReadLine();
    stream.Close();
    return line;
}
say(anna, "EsportaTXT", yesNo(anna.functions.EsportaTXT("SELECT Codice, Descrizione, Dec_Imp FROM vtx_TabVal ORDER BY Codice", anna.connection, "VALUTE.TXT", folder)));
say(anna, "EsportaTXT", firstLine("VALUTE.TXT").substr(0, 18));
anna.functions.WLog(folder + "\\vertex.log", "Valute esportate");
say(anna, "WLog", firstLine("vertex.log"));
var contact = new ActiveXObject("KapUtil.CEMail");
contact.EMail = "info@rossi.example";
contact.CodAna = "1001";
contact.RagioneSociale = "Ferramenta Rossi";
say(anna, "Update", yesNo(contact.Update()) + " " + contact.VisualizzaCome);
