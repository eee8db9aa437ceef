' The services of the host.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim files, functions, folder, log, ini, registry, shell, windows
Set files = CreateObject("Scripting.FileSystemObject")
Set functions = CreateObject("KapUtil.StdFunctions")
folder = files.GetSpecialFolder(2).Path & "\kaputil-test"
If Not files.FolderExists(folder) Then files.CreateFolder folder

log = folder & "\prova.log"
If files.FileExists(log) Then files.DeleteFile log
functions.WLog log, "prima"
functions.WLog log, "seconda"
Dim stream, text
Set stream = files.OpenTextFile(log, 1)
text = stream.ReadAll
stream.Close
Check "the log", "prima" & vbCrLf & "seconda" & vbCrLf, text
Check "a date of a file", "Date", TypeName(functions.AttributiFile(log, "MOD"))
Check "another attribute", True, IsEmpty(functions.AttributiFile(log, "mod"))

Set ini = CreateObject("KapUtil.CFileINI")
Check "a written key", True, ini.WriteIni("Stampa", "Copie", "2", folder & "\vertex.ini") <> 0
Check "a read key", "2", ini.ReadIni("stampa", "COPIE", folder & "\vertex.ini")
Check "a missing key", "", ini.ReadIni("Stampa", "Nessuna", folder & "\vertex.ini")
Check "the application's file", "Azienda.ini", ini.NomeFileINI(folder, "Azienda")
files.CreateTextFile(folder & "\" & UCase(functions.kapNomeUtente()) & ".INI").Close
Check "the user's file", functions.kapNomeUtente() & ".ini", ini.NomeFileINI(folder, "Azienda")

Set windows = CreateObject("KapUtil.CSystem")
Check "the system's folder", UCase(files.GetSpecialFolder(0).Path & "\"), UCase(windows.WindowsDirectory())

Set registry = CreateObject("KapUtil.CRegistro")
Check "a key that is not there", "Done", registry.Scrivi("HKEY_CURRENT_USER", "x", "REG_SZ", "Nome", "Software\KapUtilNessuna")
Check "nothing was made", True, IsEmpty(registry.Leggi("HKEY_CURRENT_USER", "Nome", "Software\KapUtilNessuna"))
Dim kind
kind = "REG_SZ"
Check "a written value", "Done", registry.Scrivi("HKEY_CURRENT_USER", "citt" & Chr(224), kind, "KapUtilProva", "Environment")
Check "the type is told", "1", kind
Check "a read value", "citt" & Chr(224), registry.Leggi("HKEY_CURRENT_USER", "KapUtilProva", "Environment")
registry.Scrivi "HKEY_CURRENT_USER", "42", "REG_DWORD", "KapUtilNumero", "Environment"
Check "numbers always read as 0", 0, registry.Leggi("HKEY_CURRENT_USER", "KapUtilNumero", "Environment")
files.DeleteFolder folder
