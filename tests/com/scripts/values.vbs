' Values, amounts and dates.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim functions
Set functions = CreateObject("KapUtil.StdFunctions")
Check "rounding", 2.68, functions.KapRound(2.675, 2)
Check "quotes", "L''Aquila", functions.kapApice("L'Aquila")
Check "a blank", True, functions.kapEmpty("   ")
Check "a Null", True, functions.kapEmpty(Null)
Check "no blank", False, functions.kapEmpty(0)
