' Contacts and messages, as the tests' own mail client is asked for them.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

' What the mail client was asked since the last time, with "; " behind each.
Dim client
Set client = CreateObject("Outlook.Application")
Function Asked()
    Asked = client.Asked()
End Function

Dim mail
Set mail = CreateObject("KapUtil.CEMail")
Check "a contact without its properties", False, mail.Update()
Check "its error", "1", mail.IClassi_Errore.Numero
Check "its message", "Non Sono state inserite le propriet" & Chr(224) & " obbligatorie", mail.IClassi_Errore.LeggiAttributo("ERR_MSG1")
Check "the client was not asked", "", Asked

mail.EMail = "mario@rossi.it"
mail.Nome = "Mario"
mail.Cognome = "Rossi"
mail.RagioneSociale = "Ferramenta Rossi"
mail.Indirizzo = "Via Roma 1, Bari"
mail.Telefono = "080 123456"
mail.CodAna = "C12"
Check "a new person", True, mail.Update()
Dim fields
fields = "CustomerID = mario@rossi.it; Email1Address = mario@rossi.it; FirstName = Mario; LastName = Rossi; " & _
    "CompanyName = Ferramenta Rossi; HomeTelephoneNumber = 080 123456; HomeAddress = Via Roma 1, Bari; " & _
    "GovernmentIDNumber = C12; FileAs = C12 - Rossi Mario; "
Check "what was asked for a new person", _
    "GetNamespace MAPI; GetDefaultFolder 10; Find [CustomerID] = mario@rossi.it; CreateItem 2; " & fields & _
    "Move contatti; Save; ", Asked

mail.Nome = ""
mail.Chiave = "nota@esempio.it"
Check "a company in a folder", True, mail.Update("Ufficio/Clienti")
Check "the name it is shown by", "C12 - Ferramenta Rossi", mail.VisualizzaCome
Check "what was asked for one that is there", _
    "GetNamespace MAPI; Item Ufficio; Item Clienti; Find [CustomerID] = nota@esempio.it; " & _
    "CustomerID = nota@esempio.it; Email1Address = mario@rossi.it; FirstName = ; LastName = Rossi; " & _
    "CompanyName = Ferramenta Rossi; HomeTelephoneNumber = 080 123456; HomeAddress = Via Roma 1, Bari; " & _
    "GovernmentIDNumber = C12; FileAs = C12 - Ferramenta Rossi; Save; ", Asked

Check "a folder without its store", False, mail.Update("Clienti")
Check "a folder that is not there", False, mail.Update("Ufficio/Nessuna")
Dim sentence
sentence = "Non " & Chr(232) & " stato possibile inserire il contatto controllare l'esistenza della cartella o dell'oggetto " & _
    "a cui fa riferimento la Classe." & vbCrLf
Check "the message", sentence & "cartella non trovata", mail.IClassi_Errore.LeggiAttributo("ERR_MSG1")
Asked
mail.VisualizzaCome = "rifiutato"
Check "a contact that the client refuses", False, mail.Update()
Check "its message", sentence & "salvataggio rifiutato", mail.IClassi_Errore.LeggiAttributo("ERR_MSG1")
Check "it is not saved", 0, InStr(Asked, "Save")

Check "the contact goes", True, mail.Delete()
Check "what was asked for it", "GetNamespace MAPI; GetDefaultFolder 10; Find  [CustomerID] = nota@esempio.it; Delete; ", Asked
mail.Chiave = "nessuno@esempio.it"
Check "one that is not there goes, too", True, mail.Delete("Ufficio/Clienti")
Check "what was asked for that", "GetNamespace MAPI; Item Ufficio; Item Clienti; Find  [CustomerID] = nessuno@esempio.it; ", Asked
Check "the number of contacts", 7, mail.Count()
Check "the number in a folder", 7, mail.Count("Ufficio/Clienti")
Check "the number in a folder that is not there", True, IsEmpty(mail.Count("Ufficio/Nessuna"))
Check "that it is not there", "1", mail.IClassi_Errore.Numero
Asked

mail.InviaMail "mario@rossi.it", "Offerta", "Buongiorno", "<b>Buongiorno</b>", "C:\a.pdf,C:\b.pdf"
Check "a message", "CreateItem 0; To = mario@rossi.it; Subject = Offerta; Body = Buongiorno; " & _
    "Attachments.Add C:\a.pdf; Attachments.Add C:\b.pdf; Display; ", Asked
Dim functions
Set functions = CreateObject("KapUtil.StdFunctions")
functions.kapInviaEMail "mario@rossi.it", "Offerta", "", "<b>Buongiorno</b>"
Check "a message in HTML", "CreateItem 0; To = mario@rossi.it; Subject = Offerta; HTMLBody = <b>Buongiorno</b>; Display; ", Asked
