// Recordsets from the other language.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

function failureOf(action) {
    try {
        action();
    } catch (e) {
        return (e.number < -2146828288 || e.number > -2146762753) ? e.number : e.number & 0xFFFF;
    }
    return 0;
}

var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=:memory:");
connection.Execute("CREATE TABLE Righe (Riga int, Descrizione varchar(20))");
connection.Execute("INSERT INTO Righe VALUES (10, 'Viti')");
connection.Execute("INSERT INTO Righe VALUES (20, NULL)");
var functions = new ActiveXObject("KapUtil.StdFunctions");
var rows = functions.OpenRecordset("SELECT * FROM Righe ORDER BY Riga", connection);
check("the rows", 2, rows.RecordCount);
var texts = "";
while (!rows.EOF) {
    texts += rows.Fields("Riga").Value + ":" + rows.Fields("Descrizione").Value + " ";
    rows.MoveNext();
}
check("the texts", "10:Viti 20: ", texts);
var local = new ActiveXObject("KapLocal.Recordset");
local.CursorLocation = 3;
local.Open("SELECT * FROM Righe ORDER BY Riga", connection, 3, 3);
local.Fields("Descrizione").Value = "Dadi";
local.Update();
local.Close();
var command = new ActiveXObject("KapLocal.Command");
command.ActiveConnection = connection;
command.CommandText = "SELECT Descrizione FROM Righe WHERE Riga = 10";
check("what was written", "Dadi", command.Execute().Fields(0).Value);
