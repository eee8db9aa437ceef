' Esporta una query in un file a campi fissi, con il suo SCHEMA.INI.  Exports a query to a file of fixed-width lines.
Option Explicit
Dim files, folder, connection, functions, where, stream
Set files = CreateObject("Scripting.FileSystemObject")
folder = files.GetSpecialFolder(2).Path & "\kaputil-esporta"
If files.FolderExists(folder) Then files.DeleteFolder folder
files.CreateFolder folder
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE Valute (Codice varchar(3), Descrizione varchar(10), Decimali smallint)"
connection.Execute "INSERT INTO Valute VALUES ('CHF', 'Franco', 2)"
connection.Execute "INSERT INTO Valute VALUES ('JPY', 'Yen', 0)"

Set functions = CreateObject("KapUtil.StdFunctions")
where = folder
WScript.Echo "esportata: " & functions.EsportaTXT("SELECT * FROM Valute ORDER BY Codice", connection, "VALUTE.TXT", where)
Set stream = files.OpenTextFile(folder & "\VALUTE.TXT", 1)
Do Until stream.AtEndOfStream
    WScript.Echo RTrim(stream.ReadLine)
Loop
stream.Close
files.DeleteFolder folder
