square = (x)=>{ x * x };
square 4;
twice = (f, x)=>{ f (f x) };
twice(square, 3);
k = { 42 };
k