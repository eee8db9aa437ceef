// Settings from the other language.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=:memory:");
connection.Execute("CREATE TABLE KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), Procedura varchar(30), Modulo varchar(30), " +
    "Campo varchar(30), Valore varchar(2000), Flag varchar(10))");
connection.Execute("INSERT INTO KAP_CFG VALUES ('DEFAULT', 'Vendite', 'Ordini', 'Stampa', 'Copie', '2', '1')");
var root = new ActiveXObject("KapUtil.CFG_Applicazioni");
root.Gruppo = "UFFICIO";
root.ActiveConnection = connection;
root.Add("Vendite").Procedure.Add("Ordini").Moduli.Add("Stampa").Campi.Add("Copie").ValoreDefault = "1";
root.CaricaCfgPersonalizzati();
var field = root("Vendite")("Ordini")("Stampa")("Copie");
check("the company's value", "2", field.Valore);
check("the path", "UFFICIO\\Vendite\\Ordini\\Stampa\\Copie", field.Path);
field.Valore = "3";
field.Update();
check("the row", "3", connection.Execute("SELECT Valore FROM KAP_CFG WHERE Gruppo = 'UFFICIO'").Fields(0).Value);
check("the parent", "Copie", field.Parent("copie").Nome);
