' Document numbers of a counter that two users share.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim files, file, anna, bruno, functions
Set files = CreateObject("Scripting.FileSystemObject")
file = files.GetSpecialFolder(2).Path & "\kaputil-numbers.db"
If files.FileExists(file) Then files.DeleteFile file
Set anna = CreateObject("KapLocal.Connection")
anna.Open "Provider=KapLocal;Data Source=" & file
anna.Execute "CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5))"
anna.Execute "CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, GestProvv int, PRIMARY KEY (Codice, Anno))"
anna.Execute "CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, Stato varchar(1), PRIMARY KEY (Codice, Anno, Numero))"
anna.Execute "CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int, MC_Registrazione varchar(10))"
anna.Execute "CREATE TABLE mag_TFatture (Anno smallint, Tipo varchar(3), Numero int, NumFat int)"
anna.Execute "CREATE TABLE con_TabCausali (Codice varchar(5), Registro varchar(5))"
anna.Execute "CREATE TABLE con_MovConT (Protocollo int, Causale varchar(5), Data datetime)"
anna.Execute "CREATE TABLE con_MovConD (Protocollo int, Anno smallint, Registro varchar(5))"
anna.Execute "INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT')"
anna.Execute "INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 41, 7, 1)"
anna.Execute "INSERT INTO mag_TDocumenti VALUES (2025, 'FAI', 44, NULL)"
anna.Execute "INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, 46, '')"
Set bruno = CreateObject("KapLocal.Connection")
bruno.Open "Provider=KapLocal;Data Source=" & file
Set functions = CreateObject("KapUtil.StdFunctions")

Function Stored(column)
    Stored = anna.Execute("SELECT " & column & " FROM vtx_TabPro").Fields(0).Value
End Function

Check "a look", 42, functions.Progressivi("FAI", "D", "L", 2025, 0, anna)
Check "a look leaves the counter alone", 41, Stored("n_Def")
Check "a number for Anna", 42, functions.Progressivi("FAI", "D", "S", 2025, 0, anna)
Check "a number for Bruno", 43, functions.Progressivi("FAI", "D", "S", 2025, 0, bruno)
Check "a provisional one", 8, functions.Progressivi("FAI", "P", "S", 2025, 0, anna)
Check "the counter", 43, Stored("n_Def")
Check "the provisional counter", 8, Stored("n_Prov")
Check "by the counter's code", 44, functions.Progressivi("", "D", "L", 2025, 0, anna, "FAT")
Check "one in use is passed over", 45, functions.Progressivi("FAI", "D", "S", 2025, 0, anna, , , 1)
Check "one that is reserved, too", 47, functions.Progressivi("FAI", "D", "L", 2025, 0, bruno, , , 1)
Check "the reserved number is used", 46, functions.Progressivi("FAI", "D", "S", 2025, 46, anna, , , 1)
Check "the counter follows it", 46, Stored("n_Def")
Check "the reservation is gone", 0, anna.Execute("SELECT COUNT(*) FROM vtx_TabProPrenotati").Fields(0).Value

Dim found
Set found = CreateObject("KapUtil.CProprieta")
found.Scrivi "", functions.RicercaNumeriDocPre(anna, "FAT", "2025", 40, 50, "X")
Check "what has a number", "<TIPO1>FAI</TIPO1><NUMERO1>44</NUMERO1><TIPO2>FAT</TIPO2><NUMERO2>46</NUMERO2>", found.Leggi()

Check "no type of document", -9, functions.Progressivi("", "D", "L", 2025, 0, anna)
Check "its message", "Obbligatorio passare il tipo di documento!", functions.Errore.LeggiAttributo("ERR_MSG1")
Check "a type that is not there", 5, functions.Progressivi("ZZZ", "D", "L", 2025, 5, anna)
Check "a counter that is not there", True, IsEmpty(functions.Progressivi("", "D", "L", 1999, 0, anna, "FAT"))
Check "its text", "Tipo progressivo (FAT/1999) NON trovato in tabella!", functions.Errore.LeggiAttributo("ERR_MSG1")
Check "the earlier numbering", 47, functions.Progressivi_OLD("FAI", "D", "S", 2025, 0, bruno)

Dim query
query = "SELECT MAX(n_Def) FROM vtx_TabPro"
Check "the next line", 50, functions.Riga_Prog(anna, query, 10)
bruno.Close
anna.Close
files.DeleteFile file
