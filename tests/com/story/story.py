"""The demo of the command line, step by step, as a late-bound client: story.py COMPANY FOLDER

Everything is found by name while it runs. With win32com installed the objects are those that are registered in the system;
without it they are those of the package kaputil, which binds late just so.
"""

import pathlib
import sys

try:
    from win32com.client import Dispatch, VARIANT
    import pythoncom

    def variable():
        return VARIANT(pythoncom.VT_BYREF | pythoncom.VT_VARIANT, None)
except ImportError:
    from kaputil import Dispatch, Ref as variable, register, set_locale

    set_locale("it-IT")
    # Beside the package the embedded database is what the usual name of connections stands for.
    register("KapLocal.Connection", lambda: Dispatch("ADODB.Connection"))

YEAR = 2025
chapter = 0


def say(who, member, what):
    print(f"{chapter} {who} {member}: {what}".rstrip())


def yes_no(value):
    return "yes" if value else "no"


def key_is(kind, number):
    return f"Anno = {YEAR} AND Tipo = '{kind}' AND Numero = {number}"


def query(kind, number):
    return "SELECT * FROM mag_TDocumenti WHERE " + key_is(kind, number)


class User:
    def __init__(self, name, file):
        self.name = name
        self.functions = Dispatch("KapUtil.StdFunctions")
        self.connection = Dispatch("KapLocal.Connection")
        self.connection.Open("Provider=KapLocal;Data Source=" + file)
        self.form = None

    def scalar(self, sql):
        return int(self.connection.Execute(sql).Fields(0).Value)

    def read(self, sql, shown):
        record = variable()
        found = self.functions.DB_Read(self.connection, sql, record)
        self.form = Dispatch("KapUtil.CProprieta")
        self.form.Scrivi("", record.value)
        say(self.name, "DB_Read", f"{yes_no(found)} {self.form.Leggi(shown).strip()}")

    def change(self, name, value):
        self.form.Scrivi(name, value)
        say(self.name, "Scrivi", f"{name} {self.form.Leggi(name)}")

    def result(self, member, done):
        say(self.name, member, f"{yes_no(done)} {self.functions.Errore.LeggiAttributo('ERR_MSG1')}")

    def save(self, sql):
        self.result("DB_Update", self.functions.DB_Update(self.connection, sql, self.form.Leggi()))

    def number(self, mode):
        return int(self.functions.Progressivi("PRV", "D", mode, YEAR, 0, self.connection))

    def ask(self, mode):
        say(self.name, "Progressivi", self.number(mode))

    def cents(self, member, *arguments):
        say(self.name, member, f"{round(float(getattr(self.functions, member)(*arguments)) * 100)} cents")

    def script(self):
        made = Dispatch("KapUtil.CSQL")
        made.ActiveConnection = self.connection
        return made

    def transfer(self, script, parameters):
        script.Clear()
        for name, value in parameters.items():
            script.Parametri.Scrivi(name, value)
        script.AddTmp()
        say(self.name, "AddTmp", f"{parameters['FROM']} to {parameters['TO']}")

    def execute(self, script, document):
        done = script.Execute()
        lines = self.scalar("SELECT COUNT(*) FROM mag_RDocumenti WHERE " + document)
        cents = self.scalar("SELECT CAST(ISNULL(SUM(Importo), 0) * 100 AS int) FROM mag_RDocumenti WHERE " + document)
        say(self.name, "Execute", f"{yes_no(done)} {lines} lines {cents} cents")

    def settings(self, group):
        root = Dispatch("KapUtil.CFG_Applicazioni")
        root.Gruppo = group
        root.ActiveConnection = self.connection
        modules = root.Add("Vendite").Procedure.Add("Documenti").Moduli
        heading = modules.Add("Testata").Campi
        heading.Add("TipoProposto").ValoreDefault = "FAI"
        discount = heading.Add("ScontoMassimo")
        discount.ValoreDefault = "10"
        discount.ValoriConsentiti = "10|15|20|25"
        modules.Add("Righe").Campi.Add("Passo").ValoreDefault = "5"
        Dispatch("KapUtil.CFG_Stampa").InitDefault(modules.Add("Stampe").Campi.Add("Fattura"))
        root.CaricaCfgPersonalizzati()
        return root


def fields(root, module):
    return root.Item("Vendite").Procedure.Item("Documenti").Moduli.Item(module).Campi


def description_of(error):
    """The text of an automation error: win32com has it in a tuple of its own."""
    information = getattr(error, "excepinfo", None)
    return information[2] if information else error.description


def failure_of(action):
    try:
        action()
    except Exception as error:
        return description_of(error)
    return ""


def tell(file, folder):
    global chapter
    anna, bruno = User("Anna", file), User("Bruno", file)
    invoice = anna.scalar("SELECT MAX(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND Tipo = 'FAI'")
    quotation = anna.scalar("SELECT MIN(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND Tipo = 'PRV'")

    chapter = 1
    sql = query("FAI", invoice)
    anna.read(sql, "Note")
    bruno.read(sql, "Note")
    say("Bruno", "Leggi", "the same version " + yes_no(anna.form.Leggi("AGGID") == bruno.form.Leggi("AGGID")))

    chapter = 2
    version = anna.form.Leggi("AGGID")
    anna.change("Sconto", 5)
    anna.change("Note", "Consegna entro oggi")
    anna.save(sql)
    anna.read(sql, "Note")
    say("Anna", "Leggi", "another version " + yes_no(anna.form.Leggi("AGGID") != version))
    bruno.change("Note", "Porto assegnato")
    bruno.save(sql)
    bruno.read(sql, "Note")

    chapter = 3
    sql = query("PRV", quotation)
    bruno.read(sql, "Numero")
    record = variable()
    anna.functions.DB_Read(anna.connection, sql, record)
    anna.result("DB_Delete", anna.functions.DB_Delete(anna.connection, sql, record))
    bruno.change("Note", "Valido 30 giorni")
    bruno.save(sql)

    chapter = 4
    added = anna.number("L")
    anna.ask("L")
    bruno.ask("L")
    anna.ask("S")

    chapter = 5
    sql = query("PRV", added)
    document = key_is("PRV", added)
    anna.read(sql, "Numero")
    for name, value in (("Anno", YEAR), ("Tipo", "PRV"), ("Numero", added), ("Data", "31/12/2025"), ("Cliente", 1001),
                        ("Valuta", "EUR"), ("Note", "Richiesta telefonica")):
        anna.change(name, value)
    anna.save(sql)
    bruno.read(sql, "Note")
    bruno.ask("L")

    chapter = 6
    found = anna.functions.kapLeggiRecord(
        anna.connection, "SELECT Clienti.* FROM Clienti INNER JOIN mag_TDocumenti ON "
        "mag_TDocumenti.Cliente = Clienti.Codice WHERE " + key_is("FAI", invoice), "RagioneSociale, Localita")
    say("Anna", "kapLeggiRecord", f"{found.Leggi('RagioneSociale')}, {found.Leggi('Localita')}")
    for key in (key_is("FAI", invoice), document):
        lines = "SELECT MAX(Riga) FROM mag_RDocumenti WHERE " + key
        say("Anna", "Riga_Prog", int(anna.functions.Riga_Prog(anna.connection, lines, 10, 10)))

    chapter = 7
    hers, his = anna.script(), bruno.script()
    anna.connection.Execute(
        "CREATE TABLE #Righe (Anno smallint, Tipo varchar(3), Numero int, Riga int, Descrizione varchar(60), "
        f"Qta decimal(12, 3), Prezzo money) INSERT INTO #Righe VALUES (2025, 'PRV', {added}, 10, 'Trapano a percussione', 2, 89.90), "
        f"(2025, 'PRV', {added}, 20, 'Serie di punte', 5, 12.50)")
    anna.transfer(hers, {"FROM": "#Righe", "TO": "mag_RDocumenti", "DELETE_FROM": "SI",
                         "mag_RDocumenti.Importo": "#Righe.Qta * #Righe.Prezzo"})
    hers.Command(f"UPDATE mag_TDocumenti SET Annotazioni = 'Righe aggiunte' WHERE {document}", "Annotazione fallita")
    anna.execute(hers, document)

    chapter = 8
    his.Command("DELETE mag_RDocumenti WHERE Riga = 10 AND " + document, "Cancellazione fallita")
    his.Command(f"INSERT INTO mag_RDocumenti (Anno, Tipo, Numero, Riga) VALUES (2025, 'PRV', {added}, 20)", "Riga presente")
    bruno.execute(his, document)
    say("Bruno", "MsgToString", "his own message " + yes_no("Riga presente" in his.Errore.MsgToString()))
    anna.transfer(hers, {"FROM": "mag_RDocumenti", "TO": "#Righe", "WHERE": document, "DELETE_FROM": "SI"})
    anna.execute(hers, document)

    chapter = 9
    anna.cents("KapRound", 2.675, 2)
    anna.cents("KapRound", 1.239, 2, "I")
    for typed in ("25122003", "31022003"):
        say("Anna", "kapControllaData", anna.functions.kapControllaData(typed))
    say("Anna", "NomeMese", anna.functions.NomeMese(9, "FRA"))
    say("Anna", "ConvertiData", anna.functions.ConvertiData("2003-03-05", "ITA").strip())

    chapter = 10
    anna.cents("CalcVal", anna.connection, "EUR", 10, 3, 10, 0, 0, 5)
    anna.cents("CalcVal", anna.connection, "JPY", 1234.5, 3)
    anna.cents("CalcVal", anna.connection, "EUR", 1000, 10, 150)

    chapter = 11
    say("Anna", "CalcVal", "nothing " + yes_no(not anna.functions.CalcVal(anna.connection, "XYZ", 10, 3)))

    chapter = 12
    her_settings, his_settings = anna.settings("UFFICIO"), bruno.settings("BANCO")
    for who, root in (("Anna", her_settings), ("Bruno", his_settings)):
        discount, kind = (fields(root, "Testata").Item(name) for name in ("ScontoMassimo", "TipoProposto"))
        say(who, "CaricaCfgPersonalizzati", f"{discount.Valore} of {discount.Gruppo}, {kind.Valore} of {kind.Gruppo}")
    discount = fields(her_settings, "Testata").Item("ScontoMassimo")
    say("Anna", "Valore", failure_of(lambda: setattr(discount, "Valore", "30")))

    chapter = 13
    field = fields(her_settings, "Stampe").Add("Urgente")
    field.Valore = "<ADD_RUNTIME></ADD_RUNTIME>"
    layout = Dispatch("KapUtil.CFG_Stampa")
    layout.Init(field)
    layout.Titolo = "Consegna urgente"
    layout.Copie = "2"
    field.Update()
    say("Anna", "CFG_Stampa", field.Valore)
    her_settings.CaricaCfgPersonalizzati()
    layout = Dispatch("KapUtil.CFG_Stampa")
    layout.Init(fields(her_settings, "Stampe").Item("Urgente"))
    say("Anna", "CFG_Stampa", f"{yes_no(layout.AddRunTime)} {layout.Titolo} x{layout.Copie}")
    his_settings.CaricaCfgPersonalizzati()
    say("Bruno", "CFG_Stampa", failure_of(lambda: fields(his_settings, "Stampe").Item("Urgente")))
    fields(her_settings, "Stampe").Item("Urgente").ResetDefault(True)
    say("Anna", "ResetDefault", "done")

    chapter = 14
    currencies = "SELECT Codice, Descrizione, Dec_Imp FROM vtx_TabVal ORDER BY Codice"
    place = pathlib.Path(folder)
    say("Anna", "EsportaTXT", yes_no(anna.functions.EsportaTXT(currencies, anna.connection, "VALUTE.TXT", folder)))
    say("Anna", "EsportaTXT", (place / "VALUTE.TXT").read_text("cp1252").splitlines()[0][:18])
    anna.functions.WLog(str(place / "vertex.log"), "Valute esportate")
    say("Anna", "WLog", (place / "vertex.log").read_text("cp1252").splitlines()[0])
    contact = Dispatch("KapUtil.CEMail")
    contact.EMail = "info@rossi.example"
    contact.CodAna = "1001"
    contact.RagioneSociale = "Ferramenta Rossi"
    say("Anna", "Update", f"{yes_no(contact.Update())} {contact.VisualizzaCome}")


if __name__ == "__main__":
    tell(*sys.argv[1:])
