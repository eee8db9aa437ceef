' A query is exported to a text file with lines of fixed length.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim files, functions, connection, folder, stream
Set files = CreateObject("Scripting.FileSystemObject")
folder = files.GetSpecialFolder(2).Path & "\kaputil-export"
If files.FolderExists(folder) Then files.DeleteFolder folder
files.CreateFolder folder
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE Valute (Codice varchar(3), Descrizione varchar(10), Decimali smallint)"
connection.Execute "INSERT INTO Valute VALUES ('CHF', 'Franco', 2)"
Set functions = CreateObject("KapUtil.StdFunctions")
Dim where
where = folder
Check "the export", True, functions.EsportaTXT("SELECT * FROM Valute", connection, "VALUTE.TXT", where)
Check "the folder is completed", folder & "\", where
Set stream = files.OpenTextFile(folder & "\VALUTE.TXT", 1)
Check "the line", "CHFFranco     2", RTrim(stream.ReadLine)
stream.Close
Set stream = files.OpenTextFile(folder & "\SCHEMA.INI", 1)
Dim schema
schema = stream.ReadAll
stream.Close
Check "the schema", True, InStr(schema, "col2=Descrizione Char Width 10") > 0
files.DeleteFolder folder
