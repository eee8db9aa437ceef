' The configuration tree, its default members and its lifetimes.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim root, application, procedure, module, field
Set root = CreateObject("KapUtil.CFG_Applicazioni")
root.Gruppo = "UFFICIO"
Set application = root.Add("Vendite")
Check "the application by name", "Vendite", root("VENDITE").Nome
Set procedure = application.Procedure.Add("Documenti")
Set module = procedure.Moduli.Add("Testata")
Set field = module.Campi.Add("ScontoMassimo")
field.Valore = 15
Check "through default members", "15", CStr(root("Vendite")("Documenti")("Testata")("ScontoMassimo").Valore)
Check "the path", "UFFICIO\Vendite\Documenti\Testata\ScontoMassimo", field.Path
Set root = Nothing
Set application = Nothing
Set procedure = Nothing
Set module = Nothing
Check "a node keeps those above it", "UFFICIO\Vendite\Documenti\Testata\ScontoMassimo", field.Path
