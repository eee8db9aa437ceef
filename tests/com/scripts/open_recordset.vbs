' Recordsets with the library's defaults, told to the caller.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim connection, functions, rows, cursorType, lockType, options, location, text
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE Righe (Riga int, Descrizione varchar(20), Quando datetime)"
connection.Execute "INSERT INTO Righe VALUES (10, 'Viti', '2003-12-25')"
connection.Execute "INSERT INTO Righe VALUES (20, NULL, NULL)"
connection.Execute "INSERT INTO Righe VALUES (23, 'Dadi', NULL)"
Set functions = CreateObject("KapUtil.StdFunctions")

cursorType = -1
lockType = -1
options = -1
location = -1
Set rows = functions.OpenRecordset("SELECT * FROM Righe ORDER BY Riga", connection, cursorType, lockType, options, True, True, location)
Check "the cursor", 3, cursorType
Check "the locks", 3, lockType
Check "the options", 1, options
Check "the location", 3, location
Check "the rows", 3, rows.RecordCount
Check "a date", #2003-12-25#, rows.Fields("Quando").Value
rows.MoveNext
Check "a text that was Null", "", rows.Fields("Descrizione").Value
Check "a date that was Null", True, IsNull(rows.Fields("Quando").Value)

functions.kapGoTo rows, "last"
Check "the last row", 23, rows.Fields("Riga").Value
functions.kapGoTo rows, 2
Check "the second row", 20, rows.Fields("Riga").Value
functions.kapGoTo rows, "FIRST"
Check "the first row", 10, rows("Riga").Value

text = "SELECT MAX(Riga) FROM Righe"
Check "the next line", 30, functions.Riga_Prog(connection, text, 10)
Check "the next line by ones", 24, functions.Riga_Prog(connection, text)

cursorType = -1
lockType = -1
options = -1
location = -1
On Error Resume Next
Set rows = functions.OpenRecordset("SELECT * FROM Nessuna", connection, cursorType, lockType, options, True, True, location)
Check "the number", -2147217865, Err.Number
On Error GoTo 0
Check "what was chosen before the failure", "3313", cursorType & lockType & options & location

Dim passo, inizio
passo = 0
inizio = "0"
On Error Resume Next
functions.Riga_Prog connection, "SELECT MAX(Riga) FROM Nessuna", passo, inizio
On Error GoTo 0
Check "the step and the start", "11", passo & inizio

Dim opened
opened = "Provider=KapLocal;Data Source=:memory:"
functions.ControllaConnessione opened
Check "an opened connection", True, IsObject(opened)
Check "its state", 1, opened.State

Dim field, names
For Each field In rows.Fields
    names = names & field.Name & " "
Next
Check "the fields", "Riga Descrizione Quando ", names
