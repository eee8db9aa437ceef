// Contacts and messages from the other language, as the tests' own mail client is asked for them.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var client = new ActiveXObject("Outlook.Application");
client.Asked();
var mail = new ActiveXObject("KapUtil.CEMail");
mail.EMail = "mario@rossi.it";
mail.CodAna = "C12";
mail.RagioneSociale = "Ferramenta Rossi";
check("a new company", true, mail.Update());
check("its key", "mario@rossi.it", mail.Chiave);
check("what was asked", "GetNamespace MAPI; GetDefaultFolder 10; Find [CustomerID] = mario@rossi.it; CreateItem 2; " +
    "CustomerID = mario@rossi.it; Email1Address = mario@rossi.it; FirstName = ; LastName = ; " +
    "CompanyName = Ferramenta Rossi; HomeTelephoneNumber = ; HomeAddress = ; GovernmentIDNumber = C12; " +
    "FileAs = C12 - Ferramenta Rossi; Move contatti; Save; ", client.Asked());
check("a folder that is not there", false, mail.Delete("Ufficio/Nessuna"));
check("the client's description", "cartella non trovata", mail.IClassi_Errore.LeggiAttributo("ERR_MSG1").split("\r\n")[1]);
client.Asked();

mail.InviaMail("mario@rossi.it", "Offerta", "", "<b>Buongiorno</b>", "C:\\a.pdf,C:\\b.pdf");
check("a message", "CreateItem 0; To = mario@rossi.it; Subject = Offerta; HTMLBody = <b>Buongiorno</b>; " +
    "Attachments.Add C:\\a.pdf; Attachments.Add C:\\b.pdf; Display; ", client.Asked());
new ActiveXObject("KapUtil.StdFunctions").kapInviaEMail("mario@rossi.it", "Offerta", "Buongiorno");
check("a plain message", "CreateItem 0; To = mario@rossi.it; Subject = Offerta; Body = Buongiorno; Display; ", client.Asked());
