// A form edits a document, from the other language.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=:memory:");
connection.Execute("CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5))");
connection.Execute("CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, GestProvv int, PRIMARY KEY (Codice, Anno))");
connection.Execute("CREATE TABLE Testate (Chiave int PRIMARY KEY, Numero int, Cliente varchar(40), AggID timestamp)");
connection.Execute("INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT')");
connection.Execute("INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 41, 0, 0)");
connection.Execute("INSERT INTO Testate (Chiave, Cliente) VALUES (1, 'Ferramenta Rossi')");

// This language has no variables by reference: a record's fields are read by their names.
var functions = new ActiveXObject("KapUtil.StdFunctions");
var query = "SELECT * FROM Testate WHERE Chiave = 1";
var record = functions.kapLeggiRecord(connection, query);
check("the customer", "Ferramenta Rossi", record.Leggi("Cliente"));
record.Scrivi("AggID", functions.TSToHex(connection.Execute(query).Fields("AggID").Value));
record.Scrivi("Numero", functions.Progressivi("FAI", "D", "S", 2025, 0, connection));
check("the saving", true, functions.DB_Update(connection, query, record.Leggi()));
check("the number", 42, connection.Execute(query).Fields("Numero").Value);
check("saving once more", false, functions.DB_Update(connection, query, record.Leggi()));
check("why not", "Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!", functions.Errore.LeggiAttributo("ERR_MSG1"));

var batch = new ActiveXObject("KapUtil.CSQL");
batch.ActiveConnection = connection;
batch.Command("UPDATE Testate SET Cliente = 'Ferramenta Rossi & Figli' WHERE Chiave = 1");
batch.Command("UPDATE vtx_TabPro SET n_Prov = 1");
check("the script", true, batch.Execute());
check("the customer's name", "Ferramenta Rossi & Figli", connection.Execute(query).Fields("Cliente").Value);
