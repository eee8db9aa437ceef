' Named values in one text.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim bag, name, value
Set bag = CreateObject("KapUtil.CProprieta")
bag.Scrivi "Codice", 12
bag.SCRIVI "nome", "Ferramenta Rossi"
Check "a value", "12", bag.Leggi("codice")
Check "the type of a value", "String", TypeName(bag.Leggi("codice"))
Check "the whole", "<CODICE>12</CODICE><NOME>Ferramenta Rossi</NOME>", bag.Leggi()
Check "the number of values", 2, bag.Count
Check "a value that is not there", True, IsNull(bag.Leggi("Cognome"))
name = "Sconto"
value = 7.5
bag.Scrivi name, value
Check "a variable stays as it was", 7.5, value
