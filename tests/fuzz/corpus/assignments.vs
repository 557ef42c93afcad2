a = 1;
b = 2.5;
c = true;
d = a + 3;
d