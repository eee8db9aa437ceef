' File INI: voci scritte, lette, mancanti.  INI files: keys written, read and missing.
Option Explicit
Dim files, ini, file
Set files = CreateObject("Scripting.FileSystemObject")
file = files.GetSpecialFolder(2).Path & "\kaputil-esempio.ini"
If files.FileExists(file) Then files.DeleteFile file
Set ini = CreateObject("KapUtil.CFileINI")
ini.WriteIni "Stampa", "Copie", "2", file
ini.WriteIni "Stampa", "Stampante", "Ufficio", file
WScript.Echo "copie: " & ini.ReadIni("Stampa", "Copie", file)
WScript.Echo "stampante: " & ini.ReadIni("STAMPA", "stampante", file)
WScript.Echo "mancante: [" & ini.ReadIni("Stampa", "Formato", file) & "]"
files.DeleteFile file
