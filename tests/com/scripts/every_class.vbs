' Every class is made, and does something.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim contract
Set contract = CreateObject("KapUtil.IClassi")
contract.Proprieta = "<A>1</A>"
Check "IClassi keeps nothing", True, IsEmpty(contract.Proprieta)
Check "IClassi has no error object", True, contract.Errore Is Nothing
Dim connection, key
connection = "nessuna"
key = "PGDN"
Check "IClassi reads nothing", True, IsEmpty(contract.Read(connection))
Check "IClassi writes nothing", True, IsEmpty(contract.Update(connection))
Check "IClassi deletes nothing", True, IsEmpty(contract.Delete(connection))
Check "IClassi goes nowhere", True, IsEmpty(contract.PgUpDown(key, connection))
Check "IClassi shows nothing", True, IsEmpty(contract.XCP("Codice", "", connection))
Check "its arguments stay", "nessuna PGDN", connection & " " & key

Check "CSystem", "\", Right(CreateObject("KapUtil.CSystem").WindowsDirectory(), 1)
Dim registry
Set registry = CreateObject("KapUtil.CRegistro")
registry.Chiave = "Nome"
registry.NomeValore = "Software"
Check "CRegistro", "Nome Software", registry.Chiave & " " & registry.NomeValore
Check "CRegistro has no error object", True, registry.IClassi_Errore Is Nothing
Check "CFileINI", "", CreateObject("KapUtil.CFileINI").ReadIni("Nessuna", "Nessuna", "C:\nessuna.ini")

Dim failure, copy, messages
Set failure = CreateObject("KapUtil.CErrore")
Check "CErrore begins without an error", "0", failure.Numero
failure.Numero = 1
failure.AddMessaggio "Prima"
failure.AddMessaggio "Seconda"
failure.ScriviAttributo "Campo", "Codice"
Check "CErrore's messages", "Prima" & vbCrLf & "Seconda" & vbCrLf, failure.MsgToString()
messages = failure.MsgToArray()
Check "CErrore's messages in an array", "Seconda", messages(2)
Set copy = CreateObject("KapUtil.CErrore")
copy.Init failure.ToString()
Check "CErrore as a text", "Codice Prima 1", copy.LeggiAttributo("Campo") & " " & copy.LeggiAttributo("ERR_MSG1") & " " & copy.Numero
copy.Clear
Check "CErrore cleared", "<ERR_NUMERO>0</ERR_NUMERO><ERR_MSG1></ERR_MSG1>", copy.ToString()

Dim bag
Set bag = CreateObject("KapUtil.CProprieta")
bag.Scrivi "A", 1
bag.Scrivi "B", 2
bag.Elimina "A"
Check "CProprieta", "1 B", bag.Count & " " & bag.NomeProprieta(1)

' The tree of settings, from its root and node by node.
Dim node, name
For Each name In Array("CFG_Applicazioni", "CFG_Procedure", "CFG_Moduli", "CFG_Campi")
    Set node = CreateObject("KapUtil." & name)
    Check name & " begins empty", 0, node.Count
    Check name & " adds", "Vendite", node.Add("Vendite").Nome
    Check name & " finds", "Vendite", node("VENDITE").Nome
    Check name & " counts", 1, node.Count
    node.Delete "Vendite"
    Check name & " deletes", 0, node.Count
    Check name & " has its elements", True, IsObject(node.Collezione)
Next
For Each name In Array("CFG_Applicazione", "CFG_Procedura", "CFG_Modulo")
    Set node = CreateObject("KapUtil." & name)
    node.Nome = "Vendite"
    Check name & " has a name", "Vendite", node.Nome
Next
Set node = CreateObject("KapUtil.CFG_Applicazione")
Check "CFG_Applicazione's default member", 0, node.Procedure.Count
Check "CFG_Procedura's default member", 0, CreateObject("KapUtil.CFG_Procedura").Moduli.Count
Check "CFG_Modulo's default member", 0, CreateObject("KapUtil.CFG_Modulo").Campi.Count

Dim field, printed
Set field = CreateObject("KapUtil.CFG_Campo")
field.ValoriConsentiti = "1|2|3"
field.ValoreDefault = "2"
Check "CFG_Campo's value", "2", field.Valore
field.Valore = "3"
Check "CFG_Campo is changed", True, field.Personalizzato
Set field = CreateObject("KapUtil.CFG_Campo")
field.Valore = ""
Set printed = CreateObject("KapUtil.CFG_Stampa")
printed.Init field
printed.Titolo = "Conferma"
printed.Copie = 2
printed.InElenco = False
Check "CFG_Stampa writes into its field", "<TITOLO>Conferma</TITOLO><COPIE>2</COPIE><INELENCO>0</INELENCO>", field.Valore
Check "CFG_Stampa's field", True, printed.CFGCampo Is field

Check "CEMail", "0", CreateObject("KapUtil.CEMail").IClassi_Errore.Numero
Check "CSQL", "", CreateObject("KapUtil.CSQL").ConnectionString
Check "StdFunctions", "Marzo", CreateObject("KapUtil.StdFunctions").NomeMese(3, "ITA")
Check "KapLocal.Connection", 0, CreateObject("KapLocal.Connection").State
Check "KapLocal.Recordset", 0, CreateObject("KapLocal.Recordset").State
Check "KapLocal.Command", 30, CreateObject("KapLocal.Command").CommandTimeout
