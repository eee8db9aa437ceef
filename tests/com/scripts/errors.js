// Errors with number and description.
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

var bag = new ActiveXObject("KapUtil.CProprieta");
var configuration = new ActiveXObject("KapUtil.CFG_Applicazioni");
var registry = new ActiveXObject("KapUtil.CRegistro");
configuration.Add("Vendite");
check("Null", 94, failureOf(function () { bag.Scrivi("", null); }));
check("an unknown member", 438, failureOf(function () { bag.Pippo(); }));
check("a name twice", 457, failureOf(function () { configuration.Add("VENDITE"); }));
check("a name that is not there", 5, failureOf(function () { configuration.Delete("Acquisti"); }));
check("an unset object", 91, failureOf(function () { registry.Leggi(""); }));
check("a wrong type", 13, failureOf(function () { registry.Leggi("Nessuna"); }));
check("the configuration", -2147221503, failureOf(function () { configuration.Item("Acquisti"); }));
try {
    configuration.Item("Acquisti");
} catch (e) {
    check("the description", "CFG   \\Acquisti  non  trovato", e.description);
}
