' Two users read the same record of an embedded database; the first to save wins.
Option Explicit
Dim cn, f, anna, bruno, form, query
Set cn = CreateObject("KapLocal.Connection")
cn.Open "Provider=KapLocal;Data Source=:memory:"
cn.Execute "CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40), AggID timestamp)"
cn.Execute "INSERT INTO Clienti (Codice, Nome) VALUES (12, 'Ferramenta Rossi')"

query = "SELECT * FROM Clienti WHERE Codice = 12"
Set f = CreateObject("KapUtil.StdFunctions")
f.DB_Read cn, query, anna
f.DB_Read cn, query, bruno

Set form = CreateObject("KapUtil.CProprieta")
form.Scrivi "", anna
form.Scrivi "Nome", "Ferramenta Rossi & Figli"
WScript.Echo "Anna:  " & f.DB_Update(cn, query, form.Leggi())
WScript.Echo "Bruno: " & f.DB_Update(cn, query, bruno) & "  " & f.Errore.LeggiAttributo("ERR_MSG1")
WScript.Echo cn.Execute("SELECT Nome FROM Clienti WHERE Codice = 12").Fields("Nome").Value
