' The general functions that need no form, no file and no mail client.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim f, format, first, second, third, record, fields, kind
Set f = CreateObject("KapUtil.StdFunctions")
Check "to nearest", 2.68, f.KapRound(2.675, 2)
Check "down", 1.23, f.KapRound(1.239, 2, "I")
Check "up", 1.24, f.KapRound(1.23, 2, "S")
Check "to tens", 1230, f.KapRound(1234, -1)
Check "an unknown mode", -1, f.KapRound(1, 0, "x")
Check "a number in a text", "Double 3.5", TypeName(f.kapVal("3.5")) & " " & f.kapVal("3.5")
kind = "SINGLE"
Check "by its type", "Single", TypeName(f.kapVal("3.5", kind))
Check "no number", "Integer 0", TypeName(f.kapVal("abc")) & " " & f.kapVal("abc")
Check "a quote", "L''Aquila", f.kapApice("L'Aquila")
Check "blanks only", "", f.kapApice("   ")
Check "a date for SQL", "2003-12-25", f.DtoSQL("251203")
Check "no date for SQL", "", f.DtoSQL("31/02/2003")
Check "a date", "25/12/2003", f.kapControllaData("25122003")
format = ""
Check "a date with no format", "01/02/1971", f.kapControllaData("010271", format)
Check "the format it has", "dd/mm/yyyy", format
format = "yyyymmdd"
Check "a date with a format", "20031225", f.kapControllaData("25122003", format)
Check "a month", "August", f.NomeMese(8)
Check "no month", "", f.NomeMese(13)
Check "a date in words", "5 Marzo 2003 ", f.ConvertiData("5 March 2003", "ITA")
Check "a user", True, Len(f.kapNomeUtente()) > 0

Dim connection
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE vtx_TabVal (Codice varchar(3), Dec_Imp smallint, AggID timestamp)"
connection.Execute "INSERT INTO vtx_TabVal (Codice, Dec_Imp) VALUES ('EUR', 2)"
Check "a line's value", 25.65, f.CalcVal(connection, "EUR", 10, 3, 10, 0, 0, 5)
first = 150
second = 10
third = 150
Check "beyond the discounts", True, f.CalcVal(connection, "EUR", 1000000, 3, first, second, third) = -135
Check "the first discount is capped", 99.99, first
Check "the second stays", 10, second
Check "the third is not", 150, third
Check "an unknown currency", True, IsEmpty(f.CalcVal(connection, "XXX", 10, 3))

fields = "Codice, Dec_Imp"
Set record = f.kapLeggiRecord(connection, "SELECT * FROM vtx_TabVal", fields)
Check "fields of a record", "EUR 2", record.Leggi("Codice") & " " & record.Leggi("Dec_Imp")
Set record = f.kapLeggiRecord(connection, "SELECT * FROM vtx_TabVal WHERE Codice = 'XXX'")
Check "no record", "1", record.Leggi("EOF")

connection.Execute "CREATE TABLE ABC_KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), Procedura varchar(30), Campo varchar(30), Flag varchar(10))"
connection.Execute "INSERT INTO ABC_KAP_CFG VALUES ('DEFAULT', 'Vendite', 'Ordini', 'Sconto', 'S')"
Check "a setting", "S", f.KapCFG(connection, "ABC", "Ordini").Leggi("Flag")
Check "of another application", "0", f.KapCFG(connection, "ABC", "Ordini", "Acquisti").Leggi("Flag")
Check "an empty field is a given one", "0", f.KapCFG(connection, "ABC", "Ordini", "Vendite", "").Leggi("Flag")
f.kapSendKeys "{tab}"
Check "keys that are unknown end nothing", True, IsEmpty(f.AspettaDueSecondi())
