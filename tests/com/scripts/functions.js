// The general functions, from the other language.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var f = new ActiveXObject("KapUtil.StdFunctions");
check("to nearest", -3, f.KapRound(-2.5));
check("up", 3, f.KapRound(2.1, 0, "s"));
check("a number in a text", 3.5, f.kapVal("3.5"));
check("by its type", 12, f.kapVal("12", "INTEGER"));
check("no number", 0, f.kapVal(null));
check("a quote", "L''Aquila", f.kapApice("L'Aquila"));
check("a blank", true, f.kapEmpty("   "));
check("nothing is blank", true, f.kapEmpty(undefined));
check("a date for SQL", "2070-02-01", f.DtoSQL("01/02/70"));
check("a date", "25/12/2003", f.kapControllaData("25122003"));
check("a date with a format", "2003.12.25", f.kapControllaData("25122003", "yyyy.mm.dd"));
check("a month", "D\u00e9cembre", f.NomeMese(12, "FRA"));
check("a date in words", "5 March 2003 ", f.ConvertiData("5 March 2003"));

var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=:memory:");
connection.Execute("CREATE TABLE vtx_TabVal (Codice varchar(3), Dec_Imp smallint, AggID timestamp)");
connection.Execute("INSERT INTO vtx_TabVal (Codice, Dec_Imp) VALUES ('LIT', NULL)");
check("a line's value", 26, f.CalcVal(connection, "LIT", 10, 3, 10, 0, 0, 5));
check("a record", "<CODICE>LIT</CODICE><EOF>0</EOF>", f.kapLeggiRecord(connection, "SELECT * FROM vtx_TabVal", "Codice").Leggi());
check("a version of a row", 1, f.TSToHex("\u0000\u0000\u0000\u0000\u0000\u0000\u0000\u0001") - 0);
