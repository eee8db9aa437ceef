// Every class is made, and does something.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var classes = {
    IClassi: function (o) { return o.Read("") === undefined; },
    CSystem: function (o) { return o.WindowsDirectory().slice(-1) === "\\"; },
    CRegistro: function (o) { o.Chiave = "A"; return o.Chiave === "A"; },
    CFileINI: function (o) { return o.ReadIni("Nessuna", "Nessuna", "C:\\nessuna.ini") === ""; },
    CErrore: function (o) { o.AddMessaggio("Prima"); return o.MsgToString() === "Prima\r\n"; },
    CProprieta: function (o) { o.Scrivi("A", 1); return o.NomeProprieta(1) === "A"; },
    CFG_Campi: function (o) { return o.Add("A").Nome === "A" && o("a").Nome === "A"; },
    CFG_Moduli: function (o) { return o.Add("A").Campi.Count === 0; },
    CFG_Modulo: function (o) { return o.Campi.Count === 0; },
    CFG_Procedura: function (o) { o.Nome = "A"; return o.Nome === "A"; },
    CFG_Procedure: function (o) { return o.Add("A").Moduli.Count === 0; },
    CFG_Campo: function (o) { o.ValoreDefault = "2"; return o.Valore === "2"; },
    CFG_Applicazioni: function (o) { o.Gruppo = "UFFICIO"; return o.Path.indexOf("UFFICIO") === 0; },
    CFG_Applicazione: function (o) { return o.Procedure.Count === 0; },
    CFG_Stampa: function (o) { return o.Copie === "1" && o.InElenco === true; },
    CEMail: function (o) { o.EMail = "a@b.it"; return o.EMail === "a@b.it"; },
    CSQL: function (o) { return o.Command("SELECT 1").indexOf("KAP: Errore Esecuzione Command") > 0; },
    StdFunctions: function (o) { return o.KapRound(2.675, 2) === 2.68; }
};
var made = 0;
for (var name in classes) {
    check(name, true, classes[name](new ActiveXObject("KapUtil." + name)));
    ++made;
}
check("all of them", 18, made);
