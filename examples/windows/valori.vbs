' Arrotondamenti, mesi, valori vuoti.  Rounding, months, blank values.
Option Explicit
Dim functions
Set functions = CreateObject("KapUtil.StdFunctions")
WScript.Echo "2.675 fa 2.68: " & (functions.KapRound(2.675, 2) = 2.68)
WScript.Echo functions.KapRound(1250, -2)
WScript.Echo functions.NomeMese(8, "ita") & ", " & functions.NomeMese(8, "ing")
WScript.Echo functions.kapEmpty("   ") & ", " & functions.kapEmpty("x") & ", " & functions.kapEmpty(Null)
