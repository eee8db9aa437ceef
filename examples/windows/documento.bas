Attribute VB_Name = "Documento"
' Reads a customer into the active sheet and saves what the user changed there.
'
' The record's version travels in AGGID: whoever saves second is told so.
Option Explicit

Private Const DATABASE As String = "Provider=KapLocal;Data Source=C:\Azienda\azienda.db"

Private Function Query() As String
    Query = "SELECT * FROM Clienti WHERE Codice = " & CLng(Range("B1").Value)
End Function

Public Sub Leggi()
    Dim connection As Object, functions As Object, form As Object, record As Variant
    Set connection = CreateObject("KapLocal.Connection")
    connection.Open DATABASE
    Set functions = CreateObject("KapUtil.StdFunctions")
    functions.DB_Read connection, Query(), record
    Set form = CreateObject("KapUtil.CProprieta")
    form.Scrivi "", record
    Range("B2").Value = form.Leggi("Nome")
    Range("B3").Value = record
End Sub

Public Sub Salva()
    Dim connection As Object, functions As Object, form As Object
    Set connection = CreateObject("KapLocal.Connection")
    connection.Open DATABASE
    Set functions = CreateObject("KapUtil.StdFunctions")
    Set form = CreateObject("KapUtil.CProprieta")
    form.Scrivi "", Range("B3").Value
    form.Scrivi "Nome", Range("B2").Value
    If Not functions.DB_Update(connection, Query(), form.Leggi()) Then
        MsgBox functions.Errore.LeggiAttributo("ERR_MSG1"), vbExclamation
    End If
End Sub
