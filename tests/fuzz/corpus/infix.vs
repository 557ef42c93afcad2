infix 3 left: _ plus _ => math.add;
1 plus 2;
infix 1 right: ! _ => math.negate;
! false