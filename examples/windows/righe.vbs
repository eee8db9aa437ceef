' Sposta le righe di una tabella di lavoro in quella dei documenti.  Moves rows of a work table to the documents' table.
Option Explicit
Dim connection, batch
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE Righe (Documento int, Articolo varchar(10), Quantita int, AggID timestamp)"
connection.Execute "CREATE TABLE #Lavoro (Documento int, Articolo varchar(10), Quantita int)"
connection.Execute "INSERT INTO #Lavoro VALUES (7, 'VITI', 100)"
connection.Execute "INSERT INTO #Lavoro VALUES (7, 'DADI', 200)"
connection.Execute "INSERT INTO #Lavoro VALUES (8, 'CHIODI', 5)"

Set batch = CreateObject("KapUtil.CSQL")
Set batch.ActiveConnection = connection
batch.Parametri.Scrivi "FROM", "#Lavoro"
batch.Parametri.Scrivi "TO", "Righe"
batch.Parametri.Scrivi "WHERE", "#Lavoro.Documento = 7"
batch.Parametri.Scrivi "DELETE_FROM", "SI"
batch.AddTmp
WScript.Echo "spostate: " & batch.Execute()
WScript.Echo "arrivate: " & connection.Execute("SELECT COUNT(*) FROM Righe").Fields(0).Value
WScript.Echo "rimaste: " & connection.Execute("SELECT COUNT(*) FROM #Lavoro").Fields(0).Value
