' Statements that are sent at once and all happen or none, and rows moved from table to table.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim files, file, connection, batch, block
Set files = CreateObject("Scripting.FileSystemObject")
file = files.GetSpecialFolder(2).Path & "\kaputil-batch.db"
If files.FileExists(file) Then files.DeleteFile file
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=" & file
connection.Execute "CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo money CHECK (Saldo >= 0))"
connection.Execute "INSERT INTO Conti VALUES (1, 100)"
connection.Execute "INSERT INTO Conti VALUES (2, 0)"
connection.Execute "CREATE TABLE Righe (Documento int, Articolo varchar(10), Quantita int, AggID timestamp)"
connection.Execute "CREATE TABLE #Lavoro (Documento int, Articolo varchar(10), Quantita int)"
connection.Execute "INSERT INTO #Lavoro VALUES (7, 'VITI', 100)"
connection.Execute "INSERT INTO #Lavoro VALUES (7, 'DADI', 200)"
connection.Execute "INSERT INTO #Lavoro VALUES (8, 'CHIODI', 5)"

Function Balance(account)
    Balance = CDbl(connection.Execute("SELECT Saldo FROM Conti WHERE Codice = " & account).Fields(0).Value)
End Function

Set batch = CreateObject("KapUtil.CSQL")
Set batch.ActiveConnection = connection
block = batch.Command("UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1", "Addebito fallito")
Check "the block", "SET @ERRORE_DESC='Addebito fallito'" & vbCrLf & "UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1" & vbCrLf & _
    "SET @ERRORE_NUMERO=@@error" & vbCrLf & "if (@ERRORE_NUMERO<>0) GOTO on_error" & vbCrLf & vbCrLf, block
batch.Command "UPDATE Conti SET Saldo = Saldo + 50 WHERE Codice = 2"
Check "the body", True, Left(batch.SQLString, Len(block)) = block
Check "the whole text", "sp_executesql N'", Left(batch.SQL_Execute, 16)
Check "a transfer of money", True, batch.Execute()
Check "no error", "0", batch.Errore.Numero
Check "the first account", 50, Balance(1)
Check "the second account", 50, Balance(2)

batch.Clear
Check "an empty body", "", batch.SQLString
batch.Command "UPDATE Conti SET Saldo = Saldo + 80 WHERE Codice = 2"
batch.Command "UPDATE Conti SET Saldo = Saldo - 80 WHERE Codice = 1", "Addebito fallito"
Check "one that fails", False, batch.Execute()
Check "its number", "1", batch.Errore.Numero
Check "its message is among the errors", True, InStr(batch.Errore.MsgToString(), "Addebito fallito") > 0
Check "nothing was changed", 50, Balance(2)

batch.Clear
batch.Parametri.Scrivi "FROM", "#Lavoro"
batch.Parametri.Scrivi "TO", "Righe"
batch.Parametri.Scrivi "WHERE", "#Lavoro.Documento = 7"
batch.Parametri.Scrivi "DELETE_FROM", "SI"
batch.Parametri.Scrivi "Righe.Quantita", "#Lavoro.Quantita * 2"
Check "a move of rows", True, Len(batch.AddTmp()) > 0
Check "the move", True, batch.Execute()
Check "the rows that came", 600, connection.Execute("SELECT SUM(Quantita) FROM Righe").Fields(0).Value
Check "the rows that stayed", "CHIODI", connection.Execute("SELECT Articolo FROM #Lavoro").Fields(0).Value
batch.Clear
Check "a move from nowhere", "", batch.AddTmp()
Check "what is missing", "Parametro FROM obbligatorio (tabella di origine)", batch.Errore.LeggiAttributo("ERR_MSG1")
Check "what else is missing", "Parametro TO obbligatorio (tabella di destinazione)", batch.Errore.LeggiAttributo("ERR_MSG2")
Set batch = Nothing
Check "the connection stays the client's", 1, connection.State
connection.Close

Set batch = CreateObject("KapUtil.CSQL")
batch.ConnectionString = "Provider=KapLocal;Data Source=" & file
batch.Command "DELETE FROM Righe"
Check "with a connection of its own", True, batch.Execute()
Set batch = Nothing
files.DeleteFile file
