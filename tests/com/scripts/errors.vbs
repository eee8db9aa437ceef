' Errors with number, source and description.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim bag, configuration, registry, functions, connection
Set bag = CreateObject("KapUtil.CProprieta")
Set configuration = CreateObject("KapUtil.CFG_Applicazioni")
Set registry = CreateObject("KapUtil.CRegistro")
Set functions = CreateObject("KapUtil.StdFunctions")
Set connection = CreateObject("KapLocal.Connection")
configuration.Add "Vendite"

Dim number, source, description
Sub Take()
    number = Err.Number
    source = Err.Source
    description = Err.Description
    Err.Clear
End Sub

On Error Resume Next
bag.Scrivi "", Null
Take
Dim ofNull
ofNull = number
bag.Pippo
Take
Dim ofUnknown
ofUnknown = number
configuration.Add "VENDITE"
Take
Dim ofDuplicate
ofDuplicate = number
configuration.Delete "Acquisti"
Take
Dim ofMissing
ofMissing = number
registry.Leggi ""
Take
Dim ofUnset
ofUnset = number
registry.Leggi "Nessuna"
Take
Dim ofType
ofType = number
Dim item
Set item = configuration.Item("Acquisti")
Take
Dim ofConfiguration, sourceOfConfiguration, textOfConfiguration
ofConfiguration = number
sourceOfConfiguration = source
textOfConfiguration = description
Dim unpublished
Set unpublished = CreateObject("KapUtil.CConstant")
Take
Dim ofCreation
ofCreation = number
connection.Open "Provider=KapLocal;Data Source=:memory:"
Dim rows
Set rows = functions.OpenRecordset("SELECT * FROM Nessuna", connection)
Take
Dim ofTable, textOfTable
ofTable = number
textOfTable = description
On Error GoTo 0

Check "Null", 94, ofNull
Check "an unknown member", 438, ofUnknown
Check "a name twice", 457, ofDuplicate
Check "a name that is not there", 5, ofMissing
Check "an unset object", 91, ofUnset
Check "a wrong type", 13, ofType
Check "the configuration's number", -2147221503, ofConfiguration
Check "the configuration's source", "", sourceOfConfiguration
Check "the configuration's text", "CFG   \Acquisti  non  trovato", textOfConfiguration
Check "a class that cannot be created", 429, ofCreation
Check "an unknown table", -2147217865, ofTable
Check "an unknown table's text", "Invalid object name 'Nessuna'.", textOfTable
