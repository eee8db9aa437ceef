' Segue quello che fa un programma in un file di testo.  Keeps what a program does in a text file.
Option Explicit
Dim files, functions, file, stream
Set files = CreateObject("Scripting.FileSystemObject")
file = files.GetSpecialFolder(2).Path & "\kaputil-esempio.log"
If files.FileExists(file) Then files.DeleteFile file
Set functions = CreateObject("KapUtil.StdFunctions")
functions.WLog file, "inizio"
functions.WLog file, "12 documenti numerati"
functions.WLog file, "fine"
Set stream = files.OpenTextFile(file, 1)
WScript.Echo Replace(stream.ReadAll, vbCrLf, "; ")
stream.Close
files.DeleteFile file
