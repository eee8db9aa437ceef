' The demo of the command line, step by step, as a client of another language: story.vbs COMPANY FOLDER
Option Explicit
Const kYear = 2025

Dim functions(1), connections(1), forms(1), names, chapter
names = Array("Anna", "Bruno")
Const Anna = 0
Const Bruno = 1

Sub Say(who, member, what)
    WScript.Echo RTrim(chapter & " " & names(who) & " " & member & ": " & what)
End Sub

Function YesNo(value)
    If value Then YesNo = "yes" Else YesNo = "no"
End Function

Function Scalar(text)
    Scalar = CStr(connections(Anna).Execute(text).Fields(0).Value)
End Function

Function KeyIs(kind, number)
    KeyIs = "Anno = " & kYear & " AND Tipo = '" & kind & "' AND Numero = " & number
End Function

Function Query(kind, number)
    Query = "SELECT * FROM mag_TDocumenti WHERE " & KeyIs(kind, number)
End Function

Sub Read(who, sql, shown)
    Dim record, found
    found = functions(who).DB_Read(connections(who), sql, record)
    Set forms(who) = CreateObject("KapUtil.CProprieta")
    forms(who).Scrivi "", record
    Say who, "DB_Read", YesNo(found) & " " & Trim(forms(who).Leggi(shown))
End Sub

Sub Change(who, name, value)
    forms(who).Scrivi name, value
    Say who, "Scrivi", name & " " & forms(who).Leggi(name)
End Sub

Sub Result(who, member, done)
    Say who, member, YesNo(done) & " " & functions(who).Errore.LeggiAttributo("ERR_MSG1")
End Sub

Sub Save(who, sql)
    Result who, "DB_Update", functions(who).DB_Update(connections(who), sql, forms(who).Leggi())
End Sub

Sub Ask(who, mode)
    Say who, "Progressivi", CStr(functions(who).Progressivi("PRV", "D", mode, kYear, 0, connections(who)))
End Sub

Dim who, file, folder, invoice, quotation, added, sql, record, version
file = WScript.Arguments(0)
folder = WScript.Arguments(1)
For who = Anna To Bruno
    Set functions(who) = CreateObject("KapUtil.StdFunctions")
    Set connections(who) = CreateObject("KapLocal.Connection")
    connections(who).Open "Provider=KapLocal;Data Source=" & file
Next
invoice = Scalar("SELECT MAX(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND Tipo = 'FAI'")
quotation = Scalar("SELECT MIN(Numero) FROM mag_TDocumenti WHERE Anno = 2025 AND Tipo = 'PRV'")

chapter = 1
sql = Query("FAI", invoice)
Read Anna, sql, "Note"
Read Bruno, sql, "Note"
Say Bruno, "Leggi", "the same version " & YesNo(forms(Anna).Leggi("AGGID") = forms(Bruno).Leggi("AGGID"))

chapter = 2
version = forms(Anna).Leggi("AGGID")
Change Anna, "Sconto", 5
Change Anna, "Note", "Consegna entro oggi"
Save Anna, sql
Read Anna, sql, "Note"
Say Anna, "Leggi", "another version " & YesNo(forms(Anna).Leggi("AGGID") <> version)
Change Bruno, "Note", "Porto assegnato"
Save Bruno, sql
Read Bruno, sql, "Note"

chapter = 3
sql = Query("PRV", quotation)
Read Bruno, sql, "Numero"
record = ""
functions(Anna).DB_Read connections(Anna), sql, record
Result Anna, "DB_Delete", functions(Anna).DB_Delete(connections(Anna), sql, record)
Change Bruno, "Note", "Valido 30 giorni"
Save Bruno, sql

chapter = 4
added = CStr(functions(Anna).Progressivi("PRV", "D", "L", kYear, 0, connections(Anna)))
Ask Anna, "L"
Ask Bruno, "L"
Ask Anna, "S"

chapter = 5
sql = Query("PRV", added)
Read Anna, sql, "Numero"
Change Anna, "Anno", kYear
Change Anna, "Tipo", "PRV"
Change Anna, "Numero", added
Change Anna, "Data", "31/12/2025"
Change Anna, "Cliente", 1001
Change Anna, "Valuta", "EUR"
Change Anna, "Note", "Richiesta telefonica"
Save Anna, sql
Read Bruno, sql, "Note"
Ask Bruno, "L"

chapter = 6
Set record = functions(Anna).kapLeggiRecord(connections(Anna), "SELECT Clienti.* FROM Clienti INNER JOIN mag_TDocumenti ON " & _
    "mag_TDocumenti.Cliente = Clienti.Codice WHERE " & KeyIs("FAI", invoice), "RagioneSociale, Localita")
Say Anna, "kapLeggiRecord", record.Leggi("RagioneSociale") & ", " & record.Leggi("Localita")
Say Anna, "Riga_Prog", CStr(functions(Anna).Riga_Prog(connections(Anna), "SELECT MAX(Riga) FROM mag_RDocumenti WHERE " & KeyIs("FAI", invoice), 10, 10))
Say Anna, "Riga_Prog", CStr(functions(Anna).Riga_Prog(connections(Anna), "SELECT MAX(Riga) FROM mag_RDocumenti WHERE " & KeyIs("PRV", added), 10, 10))

Function Script(who)
    Set Script = CreateObject("KapUtil.CSQL")
    Set Script.ActiveConnection = connections(who)
End Function

Sub Transfer(who, script, parameters)
    Dim i
    script.Clear
    For i = 0 To UBound(parameters) Step 2
        script.Parametri.Scrivi parameters(i), parameters(i + 1)
    Next
    script.AddTmp
    Say who, "AddTmp", parameters(1) & " to " & parameters(3)
End Sub

Sub Execute(who, script)
    Dim done
    done = script.Execute()
    Say who, "Execute", YesNo(done) & " " & Scalar("SELECT COUNT(*) FROM mag_RDocumenti WHERE " & KeyIs("PRV", added)) & " lines " & _
        Scalar("SELECT CAST(ISNULL(SUM(Importo), 0) * 100 AS int) FROM mag_RDocumenti WHERE " & KeyIs("PRV", added)) & " cents"
End Sub

chapter = 7
Dim hers, his
Set hers = Script(Anna)
Set his = Script(Bruno)
connections(Anna).Execute "CREATE TABLE #Righe (Anno smallint, Tipo varchar(3), Numero int, Riga int, Descrizione varchar(60), " & _
    "Qta decimal(12, 3), Prezzo money) INSERT INTO #Righe VALUES (2025, 'PRV', " & added & ", 10, 'Trapano a percussione', 2, 89.90), " & _
    "(2025, 'PRV', " & added & ", 20, 'Serie di punte', 5, 12.50)"
Transfer Anna, hers, Array("FROM", "#Righe", "TO", "mag_RDocumenti", "DELETE_FROM", "SI", "mag_RDocumenti.Importo", "#Righe.Qta * #Righe.Prezzo")
hers.Command "UPDATE mag_TDocumenti SET Annotazioni = 'Righe aggiunte' WHERE " & KeyIs("PRV", added), "Annotazione fallita"
Execute Anna, hers

chapter = 8
his.Command "DELETE mag_RDocumenti WHERE Riga = 10 AND " & KeyIs("PRV", added), "Cancellazione fallita"
his.Command "INSERT INTO mag_RDocumenti (Anno, Tipo, Numero, Riga) VALUES (2025, 'PRV', " & added & ", 20)", "Riga presente"
Execute Bruno, his
Say Bruno, "MsgToString", "his own message " & YesNo(InStr(his.Errore.MsgToString(), "Riga presente") > 0)
Transfer Anna, hers, Array("FROM", "mag_RDocumenti", "TO", "#Righe", "WHERE", KeyIs("PRV", added), "DELETE_FROM", "SI")
Execute Anna, hers

chapter = 9
Sub SayCents(member, value)
    Say Anna, member, CStr(CLng(value * 100)) & " cents"
End Sub
SayCents "KapRound", functions(Anna).KapRound(2.675, 2)
SayCents "KapRound", functions(Anna).KapRound(1.239, 2, "I")
Say Anna, "kapControllaData", functions(Anna).kapControllaData("25122003")
Say Anna, "kapControllaData", functions(Anna).kapControllaData("31022003")
Say Anna, "NomeMese", functions(Anna).NomeMese(9, "FRA")
Say Anna, "ConvertiData", Trim(functions(Anna).ConvertiData("2003-03-05", "ITA"))

chapter = 10
Dim discount
SayCents "CalcVal", functions(Anna).CalcVal(connections(Anna), "EUR", 10, 3, 10, 0, 0, 5)
SayCents "CalcVal", functions(Anna).CalcVal(connections(Anna), "JPY", 1234.5, 3)
discount = 150
SayCents "CalcVal", functions(Anna).CalcVal(connections(Anna), "EUR", 1000, 10, discount)

chapter = 11
Say Anna, "CalcVal", "nothing " & YesNo(IsEmpty(functions(Anna).CalcVal(connections(Anna), "XYZ", 10, 3)))

Function Settings(who, group)
    Dim root, modules, heading
    Set root = CreateObject("KapUtil.CFG_Applicazioni")
    root.Gruppo = group
    Set root.ActiveConnection = connections(who)
    Set modules = root.Add("Vendite").Procedure.Add("Documenti").Moduli
    Set heading = modules.Add("Testata").Campi
    heading.Add("TipoProposto").ValoreDefault = "FAI"
    With heading.Add("ScontoMassimo")
        .ValoreDefault = "10"
        .ValoriConsentiti = "10|15|20|25"
    End With
    modules.Add("Righe").Campi.Add("Passo").ValoreDefault = "5"
    CreateObject("KapUtil.CFG_Stampa").InitDefault modules.Add("Stampe").Campi.Add("Fattura")
    root.CaricaCfgPersonalizzati
    Set Settings = root
End Function

Function Fields(root, module)
    Set Fields = root.Item("Vendite").Procedure.Item("Documenti").Moduli.Item(module).Campi
End Function

Sub SayFields(who, root)
    With Fields(root, "Testata")
        Say who, "CaricaCfgPersonalizzati", .Item("ScontoMassimo").Valore & " of " & .Item("ScontoMassimo").Gruppo & ", " & _
            .Item("TipoProposto").Valore & " of " & .Item("TipoProposto").Gruppo
    End With
End Sub

chapter = 12
Dim hersToo, hisToo, field, print
Set hersToo = Settings(Anna, "UFFICIO")
Set hisToo = Settings(Bruno, "BANCO")
SayFields Anna, hersToo
SayFields Bruno, hisToo
Set field = Fields(hersToo, "Testata").Item("ScontoMassimo")
On Error Resume Next
field.Valore = "30"
Say Anna, "Valore", Err.Description
On Error GoTo 0

chapter = 13
Set field = Fields(hersToo, "Stampe").Add("Urgente")
field.Valore = "<ADD_RUNTIME></ADD_RUNTIME>"
Set print = CreateObject("KapUtil.CFG_Stampa")
print.Init field
print.Titolo = "Consegna urgente"
print.Copie = "2"
field.Update
Say Anna, "CFG_Stampa", field.Valore
hersToo.CaricaCfgPersonalizzati
Set print = CreateObject("KapUtil.CFG_Stampa")
print.Init Fields(hersToo, "Stampe").Item("Urgente")
Say Anna, "CFG_Stampa", YesNo(print.AddRunTime) & " " & print.Titolo & " x" & print.Copie
hisToo.CaricaCfgPersonalizzati
On Error Resume Next
Set field = Fields(hisToo, "Stampe").Item("Urgente")
Say Bruno, "CFG_Stampa", Err.Description
On Error GoTo 0
Fields(hersToo, "Stampe").Item("Urgente").ResetDefault True
Say Anna, "ResetDefault", "done"

chapter = 14
Dim files, stream, contact
Set files = CreateObject("Scripting.FileSystemObject")
Say Anna, "EsportaTXT", YesNo(functions(Anna).EsportaTXT("SELECT Codice, Descrizione, Dec_Imp FROM vtx_TabVal ORDER BY Codice", connections(Anna), "VALUTE.TXT", folder))
Set stream = files.OpenTextFile(folder & "\VALUTE.TXT", 1)
Say Anna, "EsportaTXT", Left(stream.ReadLine, 18)
stream.Close
functions(Anna).WLog folder & "\vertex.log", "Valute esportate"
Set stream = files.OpenTextFile(folder & "\vertex.log", 1)
Say Anna, "WLog", stream.ReadLine
stream.Close
Set contact = CreateObject("KapUtil.CEMail")
contact.EMail = "info@rossi.example"
contact.CodAna = "1001"
contact.RagioneSociale = "Ferramenta Rossi"
Say Anna, "Update", YesNo(contact.Update()) & " " & contact.VisualizzaCome
