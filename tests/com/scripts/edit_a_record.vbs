' A record is read, edited and saved under the eyes of another user.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim connection, functions, query, anna, bruno, form
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40), Fido money, AggID timestamp)"
connection.Execute "INSERT INTO Clienti (Codice, Nome) VALUES (12, 'Ferramenta Rossi')"
query = "SELECT * FROM Clienti WHERE Codice = 12"
Set functions = CreateObject("KapUtil.StdFunctions")

Check "the reading", True, functions.DB_Read(connection, query, anna)
Check "the type of what is read", "String", TypeName(anna)
functions.DB_Read connection, query, bruno
Set form = CreateObject("KapUtil.CProprieta")
form.Scrivi "", anna
form.Scrivi "Nome", "Ferramenta Rossi & Figli"
form.Scrivi "Fido", 1500.25
Check "the first to save", True, functions.DB_Update(connection, query, form.Leggi())
Check "the second", False, functions.DB_Update(connection, query, bruno)
Check "why not", "Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!", functions.Errore.LeggiAttributo("ERR_MSG1")
Check "the error's number", "1", functions.Errore.Numero

Dim rows
Set rows = connection.Execute("SELECT Nome, Fido FROM Clienti WHERE Codice = 12")
Check "the name", "Ferramenta Rossi & Figli", rows.Fields("Nome").Value
Check "the type of an amount", "Currency", TypeName(rows.Fields("Fido").Value)
Check "the amount", True, rows.Fields("Fido").Value = CCur(1500.25)

functions.DB_Read connection, query, anna
Check "the removal", True, functions.DB_Delete(connection, query, anna)
Set rows = connection.Execute("SELECT COUNT(*) AS N FROM Clienti")
Check "nothing is left", 0, rows.Fields("N").Value
connection.Close
