// Enumerators of collections. Some engines keep what they enumerate, so leaks are not counted here.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

function failureOf(action) {
    try {
        action();
    } catch (e) {
        return (e.number < -2146828288 || e.number > -2146762753) ? e.number : e.number & 0xFFFF;
    }
    return 0;
}

var connection = new ActiveXObject("KapLocal.Connection");
connection.Open("Provider=KapLocal;Data Source=:memory:");
var rows = connection.Execute("SELECT 1 AS Riga, 'Viti' AS Descrizione");
var names = "";
for (var e = new Enumerator(rows.Fields); !e.atEnd(); e.moveNext()) names += e.item().Name + " ";
check("the fields", "Riga Descrizione ", names);
