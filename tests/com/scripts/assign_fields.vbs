' Fields are assigned through default members, as every program writes it.
Option Explicit

Sub Check(what, expected, actual)
    If expected <> actual Then Err.Raise 1000, "test", what & ": expected " & expected & ", got " & actual
End Sub

Dim connection, rs
Set connection = CreateObject("KapLocal.Connection")
connection.Open "Provider=KapLocal;Data Source=:memory:"
connection.Execute "CREATE TABLE T (N varchar(10) PRIMARY KEY, Q int)"
connection.Execute "INSERT INTO T VALUES ('a', 1)"
Set rs = CreateObject("KapLocal.Recordset")
rs.Open "SELECT N, Q FROM T", connection, 1, 3

rs("N") = "b"
Check "by the recordset", "b", rs("N").Value
rs.Fields("N") = "c"
Check "by its fields", "c", rs.Fields("N").Value
rs.Fields.Item("N") = "d"
Check "by their item", "d", rs.Fields.Item("N").Value
rs(1) = rs(1) + 41
rs.Update
rs.AddNew
rs("N") = "nuovo"
rs("Q") = Null
rs.Update
Check "what was saved", "d42nuovo", connection.Execute("SELECT N + CAST(Q AS varchar(10)) + (SELECT MAX(N) FROM T WHERE Q IS NULL) FROM T WHERE Q = 42").Fields(0).Value

Dim number
On Error Resume Next
rs("Manca") = 1
number = Err.Number
On Error GoTo 0
Check "a field that is not there", 3265, number And &HFFFF&
