' A form edits a document: it reads it, numbers it, saves it, and moves its lines, beside another user.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim files, file, connection, other
Set files = CreateObject("Scripting.FileSystemObject")
file = files.GetSpecialFolder(2).Path & "\kaputil-request.db"
If files.FileExists(file) Then files.DeleteFile file
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=" & file
connection.Execute "CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5))"
connection.Execute "CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, GestProvv int, PRIMARY KEY (Codice, Anno))"
connection.Execute "CREATE TABLE Testate (Chiave int PRIMARY KEY, Anno smallint, Numero int, Cliente varchar(40), Data datetime, " & _
    "Totale money, Sconto float, Evaso bit, Note varchar(200), AggID timestamp)"
connection.Execute "CREATE TABLE Righe (Chiave int, Riga int, Articolo varchar(10), Quantita float, AggID timestamp)"
connection.Execute "INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT')"
connection.Execute "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 41, 0, 0)"
connection.Execute "INSERT INTO Testate (Chiave, Anno, Cliente, Data, Totale, Evaso) VALUES (1, 2025, 'Ferramenta Rossi', '2025-03-05', 1500.25, 0)"
Set other = CreateObject("KapLocal.Connection")
other.Open "Provider=KapLocal;Data Source=" & file

' The form reads the document, and so does another user's.
Dim functions, others, query, record, theirs, form
query = "SELECT * FROM Testate WHERE Chiave = 1"
Set functions = CreateObject("KapUtil.StdFunctions")
Set others = CreateObject("KapUtil.StdFunctions")
Check "the reading", True, functions.DB_Read(connection, query, record)
Check "the other's", True, others.DB_Read(other, query, theirs)
Set form = CreateObject("KapUtil.CProprieta")
form.Scrivi "", record
Check "the customer", "Ferramenta Rossi", form.Leggi("Cliente")
Check "a text that was Null", "", form.Leggi("Note")
Check "a version", True, Len(form.Leggi("AggID")) > 0

' It takes a number and saves.
form.Scrivi "Numero", functions.Progressivi("FAI", "D", "S", 2025, 0, connection)
form.Scrivi "Note", "Consegna urgente, l'imballo e' a parte"
form.Scrivi "Evaso", True
Check "the saving", True, functions.DB_Update(connection, query, form.Leggi())
Check "no error", "0", functions.Errore.Numero
Dim rows
Set rows = connection.Execute("SELECT * FROM Testate")
Check "the number", 42, rows.Fields("Numero").Value
Check "the note", "Consegna urgente, l'imballo e' a parte", rows.Fields("Note").Value
Check "the mark", True, rows.Fields("Evaso").Value
Check "the date", #2025-03-05#, rows.Fields("Data").Value
Check "the total", True, rows.Fields("Totale").Value = CCur(1500.25)

' The other user comes too late.
Check "the other's saving", False, others.DB_Update(other, query, theirs)
Check "why not", "Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!", others.Errore.LeggiAttributo("ERR_MSG1")

' The lines follow in one go, or not at all.
connection.Execute "CREATE TABLE #Righe (Chiave int, Riga int, Articolo varchar(10), Quantita float)"
connection.Execute "INSERT INTO #Righe VALUES (1, 10, 'VITI', 100)"
connection.Execute "INSERT INTO #Righe VALUES (1, 20, 'DADI', 50.5)"
Dim batch
Set batch = CreateObject("KapUtil.CSQL")
Set batch.ActiveConnection = connection
batch.Parametri.Scrivi "FROM", "#Righe"
batch.Parametri.Scrivi "TO", "Righe"
batch.Parametri.Scrivi "DELETE_FROM", "SI"
batch.AddTmp
batch.Command "UPDATE Testate SET Totale = 2000 WHERE Chiave = 1", "Totale non aggiornato"
Check "the lines", True, batch.Execute()
Check "they came", 2, connection.Execute("SELECT COUNT(*) FROM Righe").Fields(0).Value
Check "they left", 0, connection.Execute("SELECT COUNT(*) FROM #Righe").Fields(0).Value
batch.Clear
batch.Command "DELETE FROM Righe"
batch.Command "UPDATE Testata SET Totale = 0", "Tabella inesistente"
Check "a script that fails", False, batch.Execute()
Check "it tells", True, batch.Errore.MsgToString() <> ""
Check "it changed nothing", 2, connection.Execute("SELECT COUNT(*) FROM Righe").Fields(0).Value
Dim lines
lines = "SELECT MAX(Riga) FROM Righe WHERE Chiave = 1"
Check "the next line", 30, functions.Riga_Prog(connection, lines, 10)

' The document goes, and the other user is told.
functions.DB_Read connection, query, record
others.DB_Read other, query, theirs
Check "the removal", True, functions.DB_Delete(connection, query, record)
Check "saving what is gone", False, others.DB_Update(other, query, theirs)
Check "why not now", "Attenzione: Record Eliminato da altro Utente, Operazione Annullata!", others.Errore.LeggiAttributo("ERR_MSG1")
Set rows = Nothing
Set batch = Nothing
other.Close
connection.Close
files.DeleteFile file
