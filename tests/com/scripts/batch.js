// Statements that all happen or none, from the other language.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var files = new ActiveXObject("Scripting.FileSystemObject");
var file = files.GetSpecialFolder(2).Path + "\\kaputil-batch-js.db";
if (files.FileExists(file)) files.DeleteFile(file);
var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=" + file);
connection.Execute("CREATE TABLE Righe (Documento int PRIMARY KEY, Articolo varchar(10))");
connection.Execute("CREATE TABLE #Lavoro (Documento int, Articolo varchar(10))");
connection.Execute("INSERT INTO #Lavoro VALUES (7, 'VITI')");
var batch = new ActiveXObject("KapUtil.CSQL");
batch.ActiveConnection = connection;
batch.Parametri.Scrivi("FROM", "#Lavoro");
batch.Parametri.Scrivi("TO", "Righe");
check("a move of rows", "SET @ERRORE_DESC='AddTmp(INSERT):   FROM #Lavoro TO Righe'", batch.AddTmp().split("\r\n")[0]);
batch.Command("UPDATE Righe SET Articolo = 'DADI'", "Modifica fallita");
check("both", true, batch.Execute());
check("what is there", "DADI", connection.Execute("SELECT Articolo FROM Righe").Fields(0).Value);
check("once more", false, batch.Execute());
check("its number", "1", batch.Errore.Numero);
check("its message", true, batch.Errore.MsgToString().indexOf("AddTmp(INSERT):   FROM #Lavoro TO Righe") >= 0);
batch = null;
connection.Close();
connection = null;
CollectGarbage();
files.DeleteFile(file);
