' Settings that a group of users changed, kept in a table and loaded by another program.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim connection
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), Procedura varchar(30), Modulo varchar(30), " & _
    "Campo varchar(30), Valore varchar(2000), Flag varchar(10))"

Function Declared(group)
    Dim field
    Set Declared = CreateObject("KapUtil.CFG_Applicazioni")
    Declared.Gruppo = group
    Set Declared.ActiveConnection = connection
    Set field = Declared.Add("Vendite").Procedure.Add("Ordini").Moduli.Add("Stampa").Campi.Add("Copie")
    field.ValoreDefault = "1"
    field.ValoriConsentiti = "1|2|3"
End Function

Function FieldOf(root)
    Set FieldOf = root("Vendite")("Ordini")("Stampa")("Copie")
End Function

Dim field, number
Set field = FieldOf(Declared("UFFICIO"))
On Error Resume Next
field.Valore = "9"
number = Err.Number
On Error GoTo 0
Check "a value that is not allowed", -2147221503, number
field.Valore = "3"
field.Update
Check "the row", "UFFICIO Copie 3", connection.Execute("SELECT Gruppo + ' ' + Campo + ' ' + Valore FROM KAP_CFG").Fields(0).Value

Dim root, group
For Each group In Array("UFFICIO", "BANCO")
    Set root = Declared(group)
    root.CaricaCfgPersonalizzati
    If group = "UFFICIO" Then number = "3" Else number = "1"
    Check "the copies of " & group, number, FieldOf(root).Valore
Next

Set root = Declared("UFFICIO")
root.CaricaCfgPersonalizzati
FieldOf(root).ResetDefault True
Check "the default again", "1", FieldOf(root).Valore
Check "no row", 0, connection.Execute("SELECT COUNT(*) FROM KAP_CFG").Fields(0).Value
Dim application, names
For Each application In root.Collezione
    names = names & application.Nome & " "
Next
Check "the applications", "Vendite ", names
