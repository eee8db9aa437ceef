' Legge, modifica e salva un ordine; chi salva per secondo viene avvisato.  Reads, changes and saves an order.
Option Explicit
Dim connection, functions, form, record, query
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE Ordini (Numero int PRIMARY KEY, Cliente varchar(40), Evaso bit, AggID timestamp)"
connection.Execute "INSERT INTO Ordini (Numero, Cliente, Evaso) VALUES (1, 'Ferramenta Rossi', 0)"

query = "SELECT * FROM Ordini WHERE Numero = 1"
Set functions = CreateObject("KapUtil.StdFunctions")
Set form = CreateObject("KapUtil.CProprieta")
functions.DB_Read connection, query, record
form.Scrivi "", record
form.Scrivi "Evaso", True
WScript.Echo "salvato: " & functions.DB_Update(connection, query, form.Leggi())
WScript.Echo "salvato ancora: " & functions.DB_Update(connection, query, form.Leggi())
WScript.Echo functions.Errore.LeggiAttributo("ERR_MSG1")
functions.DB_Read connection, query, record
WScript.Echo "cancellato: " & functions.DB_Delete(connection, query, record)
