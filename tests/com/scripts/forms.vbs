' Forms and text boxes of the client's own.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Class TextBox
    Public Text
    Public Default Property Get Value()
        Value = Text
    End Property
End Class

Class Window
    Public Top
    Public Left
    Public Width
    Public Height
    Public Tag
End Class

Dim functions, parent, child, source, target
Set functions = CreateObject("KapUtil.StdFunctions")
Set parent = New Window
parent.Top = 1000
parent.Left = 200
parent.Width = 6000
parent.Height = 4000
parent.Tag = "x[MDIExtender]"
Set child = New Window
functions.PosizionaForm child, parent, 100
Check "the child's left", 260, child.Left
Check "the child's width", 5940, child.Width
Check "the child's top", 1030, child.Top
Check "the child's height", 4570, child.Height
Check "the top for a child", 1940, functions.TrovaTop(parent, 10)

Set source = New TextBox
source.Text = "Bari"
Set target = New TextBox
target.Text = " . "
functions.Ripeti source, target
Check "the repeated text", "Bari", target.Text
target.Text = ".."
functions.Ripeti source, target
Check "the text that is kept", "..", target.Text
