obj = { x = 1; y = { x + 1 }; y };
obj;
obj.x;
f = (a)=>{ g = (b)=>{ a + b }; g };
h = f 1;
h 2
// comment at the end