// Document numbers from the other language.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=:memory:");
connection.Execute("CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5))");
connection.Execute("CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, GestProvv int, PRIMARY KEY (Codice, Anno))");
connection.Execute("CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, Stato varchar(1), PRIMARY KEY (Codice, Anno, Numero))");
connection.Execute("INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT')");
connection.Execute("INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 41, 0, 0)");
connection.Execute("INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, 50, '')");
var functions = new ActiveXObject("KapUtil.StdFunctions");
check("a look", 42, functions.Progressivi("FAI", "D", "L", 2025, 0, connection));
check("a number", 42, functions.Progressivi("FAI", "D", "S", 2025, 0, connection));
check("a provisional look", 43, functions.Progressivi("FAI", "P", "L", 2025, 0, connection));
check("a number that is stored", 57, functions.Progressivi("FAI", "D", "S", 2025, 57, connection));
check("by the counter's code", 58, functions.Progressivi("", "D", "L", 2025, 0, connection, "FAT"));
check("by the mark of what is not given", 58, functions.Progressivi("FAI", "D", "L", 2025, 0, connection, "\u00b0\u00b0\u00b0"));
check("an empty code is a given one", undefined, functions.Progressivi("FAI", "D", "L", 2025, 0, connection, ""));
check("its message", "Tipo progressivo (/2025) NON trovato in tabella!", functions.Errore.LeggiAttributo("ERR_MSG1"));
check("the reservation", "<TIPO1>\u00b0\u00b0\u00b0</TIPO1><NUMERO1>50</NUMERO1>",
    functions.RicercaNumeriDocPre(connection, "FAT", "2025", 40, 60, "P"));
connection.Close();
