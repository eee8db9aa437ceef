' Piu' comandi che valgono tutti o nessuno.  Several commands that all happen or none.
Option Explicit
Dim connection, batch
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE Conti (Codice int PRIMARY KEY, Saldo money CHECK (Saldo >= 0))"
connection.Execute "INSERT INTO Conti VALUES (1, 100)"
connection.Execute "INSERT INTO Conti VALUES (2, 0)"

Set batch = CreateObject("KapUtil.CSQL")
Set batch.ActiveConnection = connection

Sub Transfer(amount)
    batch.Clear
    batch.Command "UPDATE Conti SET Saldo = Saldo + " & amount & " WHERE Codice = 2", "Accredito fallito"
    batch.Command "UPDATE Conti SET Saldo = Saldo - " & amount & " WHERE Codice = 1", "Addebito fallito"
    WScript.Echo "giroconto di " & amount & ": " & batch.Execute()
    WScript.Echo "saldo del secondo conto: " & connection.Execute("SELECT Saldo FROM Conti WHERE Codice = 2").Fields(0).Value
End Sub

Transfer 60
Transfer 50
