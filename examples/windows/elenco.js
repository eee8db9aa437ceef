// Scorre un recordset, lo filtra e lo ordina.  Walks through a recordset, filters and sorts it.
var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=:memory:");
connection.Execute("CREATE TABLE Articoli (Codice varchar(10) PRIMARY KEY, Prezzo money, Giacenza int)");
connection.Execute("INSERT INTO Articoli VALUES ('VITI', 0.25, 1000)");
connection.Execute("INSERT INTO Articoli VALUES ('DADI', 0.5, 0)");
connection.Execute("INSERT INTO Articoli VALUES ('CHIODI', 0.125, 40)");

var rows = new ActiveXObject("KapLocal.Recordset");
rows.CursorLocation = 3;
rows.Open("SELECT * FROM Articoli", connection, 3, 3);
function list(title) {
    var line = title;
    for (; !rows.EOF; rows.MoveNext()) line += " " + rows("Codice").Value;
    WScript.Echo(line);
}
rows.Sort = "Codice";
list("tutti:");
rows.Filter = "Giacenza > 0";
rows.MoveFirst();
list("disponibili:");
