// Forms that are objects of this language: members without a type, found in any case.
function check(what, expected, actual) {
    if (expected !== actual) throw new Error(what + ": expected " + expected + ", got " + actual);
}

var functions = new ActiveXObject("KapUtil.StdFunctions");
var parent = {top: 1000, left: 200, width: 6000, height: 4000, tag: ""};
var child = {Left: 0, Width: 0, Top: 0, Height: 0};
functions.PosizionaForm(child, parent, 100);
check("the child's place", "260 5940 100 4900", child.Left + " " + child.Width + " " + child.Top + " " + child.Height);
check("the top for a child", 1940, functions.TrovaTop(parent, 10));
var target = {Text: " . "};
functions.Ripeti("Bari", target);
check("the repeated text", "Bari", target.Text);
