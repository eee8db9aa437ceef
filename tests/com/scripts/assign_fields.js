// Fields are assigned through default members in the other language.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=:memory:");
connection.Execute("CREATE TABLE T (N varchar(10) PRIMARY KEY)");
connection.Execute("INSERT INTO T VALUES ('a')");
var rs = new ActiveXObject("KapLocal.Recordset");
rs.Open("SELECT N FROM T", connection, 1, 3);
rs.Fields("N") = "c";
check("by the fields", "c", rs.Fields("N").Value);
rs.Fields.Item("N") = "d";
check("by their item", "d", rs.Fields.Item("N").Value);
rs.Update();
check("what was saved", "d", connection.Execute("SELECT N FROM T").Fields(0).Value);
