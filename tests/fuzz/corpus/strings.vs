s = "tab\there \"quoted\" line\nnext \\ end";
s + 1;
"=" ;
"" + [1, 2]