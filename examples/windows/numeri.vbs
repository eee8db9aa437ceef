' Numera documenti senza buchi e senza doppioni.  Numbers documents without gaps and without duplicates.
Option Explicit
Dim connection, functions, i
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5))"
connection.Execute "CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, GestProvv int, " & _
    "PRIMARY KEY (Codice, Anno))"
connection.Execute "INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT')"
connection.Execute "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 41, 0, 1)"

Set functions = CreateObject("KapUtil.StdFunctions")
WScript.Echo "il prossimo, senza prenderlo: " & functions.Progressivi("FAI", "D", "L", 2025, 0, connection)
For i = 1 To 3
    WScript.Echo "preso: " & functions.Progressivi("FAI", "D", "S", 2025, 0, connection)
Next
WScript.Echo "provvisorio: " & functions.Progressivi("FAI", "P", "S", 2025, 0, connection)
