' A connection string that is not the library's own is opened by the data-access objects of the system.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim functions, connection, query, record, form
Set functions = CreateObject("KapUtil.StdFunctions")
connection = "Provider=Prova;Data Source=sede"
functions.ControllaConnessione connection
Check "an opened connection", 1, connection.State
connection.Execute "CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40), AggID timestamp)"
connection.Execute "INSERT INTO Clienti (Codice, Nome) VALUES (12, 'Ferramenta Rossi')"
query = "SELECT * FROM Clienti WHERE Codice = 12"
Check "the reading", True, functions.DB_Read(connection, query, record)
Set form = CreateObject("KapUtil.CProprieta")
form.Scrivi "", record
form.Scrivi "Nome", "Rossi & Figli"
Check "the saving", True, functions.DB_Update(connection, query, form.Leggi())
Check "the name", "Rossi & Figli", connection.Execute(query).Fields("Nome").Value

Dim number, description
connection = "Provider=Nessuno;Data Source=sede"
On Error Resume Next
functions.ControllaConnessione connection
number = Err.Number
description = Err.Description
On Error GoTo 0
Check "another provider", 3706, number
Check "what the system's objects tell of it", "Provider non trovato:", Left(description, 21)
Check "the text stays", "Provider=Nessuno;Data Source=sede", connection
