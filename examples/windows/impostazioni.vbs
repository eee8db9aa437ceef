' Impostazioni con un valore predefinito e uno proprio di un gruppo.  Settings with a default and a group's own value.
Option Explicit
Dim connection, root, field
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), Procedura varchar(30), " & _
    "Modulo varchar(30), Campo varchar(30), Valore varchar(2000), Flag varchar(10))"

Function Tree(group)
    Set Tree = CreateObject("KapUtil.CFG_Applicazioni")
    Tree.Gruppo = group
    Set Tree.ActiveConnection = connection
    Tree.Add("Vendite").Procedure.Add("Ordini").Moduli.Add("Stampa").Campi.Add("Copie").ValoreDefault = "1"
    Tree.CaricaCfgPersonalizzati
End Function

Set root = Tree("UFFICIO")
Set field = root("Vendite")("Ordini")("Stampa")("Copie")
WScript.Echo "predefinito: " & field.Valore
field.Valore = "3"
field.Update
WScript.Echo "dell'ufficio: " & Tree("UFFICIO")("Vendite")("Ordini")("Stampa")("Copie").Valore
WScript.Echo "del magazzino: " & Tree("MAGAZZINO")("Vendite")("Ordini")("Stampa")("Copie").Valore
