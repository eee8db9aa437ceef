' Late-bound calls from a script: the library's, and the system's own dictionary, beside the empty loop.
Option Explicit
Const CALLS = 200000
Dim bag, dictionary, i, n, begun, ofEmpty, ofBag, ofDictionary
Set bag = CreateObject("KapUtil.CErrore")
Set dictionary = CreateObject("Scripting.Dictionary")

begun = Timer
For i = 1 To CALLS
    n = i
Next
ofEmpty = Timer - begun

begun = Timer
For i = 1 To CALLS
    n = bag.Numero
Next
ofBag = Timer - begun

begun = Timer
For i = 1 To CALLS
    n = dictionary.Count
Next
ofDictionary = Timer - begun

WScript.Echo "the empty loop                   " & Round(ofEmpty / CALLS * 1000000000) & " ns"
WScript.Echo "CErrore.Numero                   " & Round(ofBag / CALLS * 1000000000) & " ns"
WScript.Echo "Scripting.Dictionary.Count       " & Round(ofDictionary / CALLS * 1000000000) & " ns"
